#pragma once

#include <QAbstractButton>

/// A small icon on a card that takes clicks: 16 by 16, white at 0.7 opacity, in a larger square that is
/// easier to hit.
///
/// A checkable one shows the state of a record. A click, also one by assistive technology, only emits
/// clicked(); the state changes when the record's owner calls setChecked().
class IconButton final : public QAbstractButton
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(IconButton)

public:
    explicit IconButton(QWidget *parent = nullptr);

    /// `name` is for assistive technology and the tool tip.
    void setSymbol(const QString &symbol, const QString &name);

    /// Makes it checkable, with a symbol for each state.
    void setSymbols(const QString &unchecked, const QString &checked, const QString &name);

    void setChecked(bool checked);

    QSize sizeHint() const override;

protected:
    void checkStateSet() override;
    void nextCheckState() override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString symbol;
    QString checkedSymbol;
    bool isShowingRecord = false;
};
