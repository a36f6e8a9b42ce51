#pragma once

#include "toolkit/Sheet.h"

class QLineEdit;

/// The base of the editors: the title row, the save and the close button, and how a record is saved.
///
/// Saving shows the first validation error in an alert. A successful save closes the sheet; if the store
/// rejects the record, the sheet stays open, without a message. Closing it in any other way stores nothing.
class EditSheet : public Sheet
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EditSheet)

protected:
    enum class Purpose { add, modify };

    EditSheet(const QString &windowTitle, QWidget *parent);

    /// Adds the row of the title and focuses its field.
    void addTitleRow(const QString &text);

    /// Adds a row with a label and a field that is no wider than it needs to be.
    void addFieldRow(const QString &label, QWidget *field);

    /// Adds the save and the close button. To be called after the rows.
    void addButtons(Purpose purpose);

    /// The entered title. A title that is too long for the field is returned whole unless it was edited.
    QString title() const;

    void setTitle(const QString &text);

private:
    /// The message for the first invalid field apart from the title; empty if all are valid.
    virtual QString validationError() const { return {}; }

    /// Hands the record to its store; false if that rejects it.
    virtual bool commit() = 0;

    void save();

    QLineEdit *titleField = nullptr;
    QString originalTitle;
};
