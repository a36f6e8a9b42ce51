#pragma once

#include "store/Plan.h"
#include "ui/EditSheet.h"

#include <QPointer>

#include <array>

class Clock;
class FileChooser;
class PlanStore;
class QCheckBox;
class SegmentedChoice;
class TimeField;

/// The form in which a person creates a plan or changes one. It works on a copy: nothing reaches the store
/// before it is saved.
class PlanEdit final : public EditSheet
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlanEdit)

public:
    /// For a new plan: now, on working days.
    PlanEdit(PlanStore &planStore, const Clock &clock, QWidget *parent);

    /// For changing `plan`, which keeps its id. A time of it that cannot be read is shown as now.
    PlanEdit(PlanStore &planStore, const Clock &clock, const Plan &plan, QWidget *parent);

private:
    PlanEdit(Purpose purpose, PlanStore &planStore, const Clock &clock, const Plan &plan, QWidget *parent);

    QString validationError() const override;
    bool commit() override;

    void addWeekRow();
    void addLoopRow();
    void addMusicRow();
    void chooseFile();
    void setFile(const QString &path);

    Purpose purpose;
    PlanStore &planStore;
    Plan plan;
    TimeField *begin;
    TimeField *end;
    std::array<QCheckBox *, planWeekdays.size()> week;
    SegmentedChoice *loop;
    QLineEdit *content;
    QPointer<FileChooser> fileChooser;
};
