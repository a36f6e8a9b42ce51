#pragma once

#include "toolkit/Group.h"

#include <QStringList>

class QAbstractButton;

/// A choice of exactly one of a few texts, side by side in one frame. It is changed by clicks, or by the
/// arrow keys while it has the focus. Assistive technology sees radio buttons in a group of its accessible
/// name.
class SegmentedChoice final : public Group
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SegmentedChoice)

public:
    /// The first of `texts`, of which there are at least two, is chosen.
    explicit SegmentedChoice(const QStringList &texts, QWidget *parent = nullptr);

    /// The index of the chosen text.
    int choice() const;

    void setChoice(int index);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QList<QAbstractButton *> segments;
};
