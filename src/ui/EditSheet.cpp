#include "ui/EditSheet.h"

#include "toolkit/Alert.h"
#include "toolkit/FormRow.h"

#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

EditSheet::EditSheet(const QString &windowTitle, QWidget *parent) : Sheet(windowTitle, parent) {}

void EditSheet::addTitleRow(const QString &text)
{
    // Its length is limited by default, because millions of characters take seconds to lay out.
    titleField = new QLineEdit;
    setTitle(text);
    auto *row = new FormRow(tr("Title:"));
    row->addField(titleField, 1);
    addRow(row);
    titleField->setFocus();
    const int length = int(titleField->text().size());
    titleField->setSelection(length, -length); // backwards, so that the beginning stays in view
}

void EditSheet::addFieldRow(const QString &label, QWidget *field)
{
    auto *row = new FormRow(label);
    row->addField(field);
    row->addStretch();
    addRow(row);
}

void EditSheet::addButtons(Purpose purpose)
{
    const bool isNew = purpose == Purpose::add;
    QPushButton *saveButton =
        addButton(isNew ? u"plus"_s : u"square.and.pencil"_s, isNew ? tr("Add") : tr("Modify"));
    connect(saveButton, &QPushButton::clicked, this, &EditSheet::save);
    connect(addButton(u"xmark"_s, tr("Close")), &QPushButton::clicked, this, &EditSheet::reject);
}

QString EditSheet::title() const
{
    return titleField->isModified() ? titleField->text() : originalTitle;
}

void EditSheet::setTitle(const QString &text)
{
    originalTitle = text;
    titleField->setText(text);
}

void EditSheet::save()
{
    const QString message = title().isEmpty() ? tr("Please input the Title") : validationError();
    if (!message.isEmpty())
        Alert::show(this, tr("Tip"), message, {{tr("OK")}});
    else if (commit())
        accept();
}
