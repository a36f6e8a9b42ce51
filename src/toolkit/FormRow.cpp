#include "toolkit/FormRow.h"

#include "toolkit/Style.h"

#include <QAbstractButton>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

FormRow::FormRow(const QString &text, QWidget *parent)
    : QWidget(parent)
    , label(new QLabel(text))
    , row(new QHBoxLayout(this))
{
    row->setContentsMargins({});
    row->setSpacing(Style::spacing);
    row->addWidget(label);
    row->addSpacing(Style::fieldOffset - Style::labelWidth - Style::spacing);
    updateLabelWidth();
}

void FormRow::addField(QWidget *field, int stretch)
{
    if (!label->buddy())
        label->setBuddy(field);
    if (field->accessibleName().isEmpty() && !qobject_cast<QAbstractButton *>(field))
        field->setAccessibleName(label->text());
    row->addWidget(field, stretch);
}

void FormRow::addStretch()
{
    row->addStretch();
}

void FormRow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        updateLabelWidth();
    QWidget::changeEvent(event);
}

void FormRow::updateLabelWidth()
{
    label->setFixedWidth(Style::scaledToFont(Style::labelWidth, font()));
}
