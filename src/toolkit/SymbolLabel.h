#pragma once

#include <QLabel>

/// An icon on a card that only tells something: drawn like an IconButton, but it takes no clicks.
class SymbolLabel final : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SymbolLabel)

public:
    /// `name` is what assistive technology and the tool tip say.
    SymbolLabel(QString symbol, const QString &name, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString symbol;
};
