#pragma once

#include <QCheckBox>

/// A check box whose frame can be seen in a dark scheme too, where styles draw it in a shade of the
/// background.
class CheckBox final : public QCheckBox
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CheckBox)

public:
    using QCheckBox::QCheckBox;

protected:
    void paintEvent(QPaintEvent *event) override;
};
