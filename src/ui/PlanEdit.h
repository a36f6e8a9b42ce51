#pragma once

#include "store/Plan.h"
#include "ui/EditSheet.h"

#include <QPointer>

#include <array>
#include <optional>

class Clock;
class FileChooser;
class PlanStore;
class QCheckBox;
class SegmentedChoice;
class TimeField;

/// The editor for a new or an existing plan. It works on a copy: nothing reaches the store before it is
/// saved.
class PlanEdit final : public EditSheet
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlanEdit)

public:
    /// Edits `plan`, which keeps its id; without one, a new plan for now on working days. A time that cannot
    /// be read is shown as now.
    PlanEdit(PlanStore &planStore, const Clock &clock, const std::optional<Plan> &plan, QWidget *parent);

private:
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
