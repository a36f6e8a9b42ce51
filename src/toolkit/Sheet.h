#pragma once

#include <QDialog>

class FormRow;
class QPushButton;
class QVBoxLayout;

/// An editor over its window: a column of rows, and buttons under their fields.
///
/// It is window-modal, appears at the top of its window, and deletes itself when it closes; show it with
/// open(). Escape closes it, Enter presses its first button.
class Sheet : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Sheet)

public:
    /// `title` names the dialog; `over` is any widget of the window that it belongs to.
    Sheet(const QString &title, QWidget *over);

protected:
    /// Adds a row below those so far.
    void addRow(QWidget *row);

    /// Adds a button to the last row, with an icon before its text. The first one is the default.
    QPushButton *addButton(const QString &symbol, const QString &text);

    void showEvent(QShowEvent *event) override;

private:
    QVBoxLayout *rows;
    FormRow *buttons;
};
