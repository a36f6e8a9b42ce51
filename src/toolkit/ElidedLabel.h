#pragma once

#include <QLabel>

/// One line of plain text that gives way: what does not fit is elided, and the whole text is its tool tip.
///
/// Its height is that of its font whatever characters it shows, and its minimum width is 0. Words run in the
/// direction of their script, numbers alone in that of the layout. It keeps the first thousand characters of
/// a text: more than that is never seen, and to measure millions takes seconds.
class ElidedLabel final : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ElidedLabel)

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    void setText(const QString &text);

    /// True while part of the text is not to be seen.
    bool isElided() const;

    void setColor(const QColor &color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QColor color;
};
