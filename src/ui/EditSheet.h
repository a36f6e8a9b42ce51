#pragma once

#include "toolkit/Sheet.h"

class FormRow;
class QLineEdit;

/// What the editors have in common: the title, the save and the close button, and how a record is saved.
///
/// The first thing that is missing is named in an alert. A save that succeeds closes the sheet; one that the
/// store refuses leaves it as it is, without a message. Closing it in another way stores nothing.
class EditSheet : public Sheet
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EditSheet)

protected:
    enum class Purpose { add, modify };

    EditSheet(const QString &windowTitle, QWidget *parent);

    /// A field for one line of text, of any length.
    static QLineEdit *textField(const QString &text);

    /// Adds the row of the title, which gets the focus.
    void addTitleRow(const QString &text);

    /// Adds a row with a label and a field that is no wider than it needs to be.
    void addFieldRow(const QString &label, QWidget *field);

    /// Adds the save and the close button. To be called after the rows.
    void addButtons(Purpose purpose);

    /// The title as it stands in its field; one that is too long for the field whole, unless it was edited.
    QString title() const;

    /// Enters a title.
    void setTitle(const QString &text);

private:
    /// Names the first thing that is missing apart from the title; empty when nothing is.
    virtual QString validationError() const = 0;

    /// Hands the record to its store; false when that refuses it.
    virtual bool commit() = 0;

    void save();

    QLineEdit *titleField = nullptr;
    QString givenTitle;
};
