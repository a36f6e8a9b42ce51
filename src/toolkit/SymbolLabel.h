#pragma once

#include <QLabel>

/// An icon on a card that only informs: drawn like an IconButton, but it takes no clicks.
class SymbolLabel final : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SymbolLabel)

public:
    /// `name` is for assistive technology and the tool tip.
    SymbolLabel(QString symbol, const QString &name, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString symbol;
};
