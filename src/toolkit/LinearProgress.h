#pragma once

#include <QProgressBar>

/// A thin progress bar in a light green on a dark track, without a text.
class LinearProgress final : public QProgressBar
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LinearProgress)

public:
    explicit LinearProgress(QWidget *parent = nullptr);

    /// Shows `value` out of `total`. A total that is not above 0 shows an empty bar.
    void setProgress(double value, double total);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};
