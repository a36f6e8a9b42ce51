#pragma once

#include <QLabel>

/// One line of plain text that is elided where it does not fit; its tool tip then has the whole text.
///
/// Its height is that of its font whatever characters it shows, and its minimum width is 0. Words run in the
/// direction of their script, numbers alone in that of the layout. It keeps the first thousand characters of
/// a text: more than that is never seen, and measuring millions takes seconds.
class ElidedLabel final : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ElidedLabel)

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    void setText(const QString &text);

    /// Whether part of the text is cut off.
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
