#pragma once

#include <QList>
#include <QWidget>

class ElidedLabel;

/// Short texts side by side, such as the days of a week, each of which is on, in soft white, or off, in soft
/// grey and disabled.
///
/// They share a font, which gets smaller where the row is too narrow for them.
class TextRow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TextRow)

public:
    explicit TextRow(const QStringList &texts, QWidget *parent = nullptr);

    void setOn(int index, bool on);

    QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    qreal widthAt(qreal scale) const;
    void shrinkToFit();

    QList<ElidedLabel *> labels;
};
