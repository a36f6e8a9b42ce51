#pragma once

#include "toolkit/ModalPanel.h"

class FormRow;
class QPushButton;
class QVBoxLayout;

/// An editor that hangs under the toolbar of its window: a column of rows, and buttons under their fields.
/// Enter presses its first button.
class Sheet : public ModalPanel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Sheet)

public:
    /// `title` names the dialog; `parent` is any widget of the window that it belongs to.
    Sheet(const QString &title, QWidget *parent);

protected:
    /// Adds a row below those so far.
    void addRow(QWidget *row);

    /// Adds a button to the last row, with an icon before its text. The first one is the default.
    QPushButton *addButton(const QString &symbol, const QString &text);

    void changeEvent(QEvent *event) override;

private:
    void updateMaximumSize();

    QVBoxLayout *rows;
    FormRow *buttons;
};
