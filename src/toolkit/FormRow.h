#pragma once

#include <QWidget>

class QHBoxLayout;
class QLabel;

/// A row of a form: a label at the leading side, and one field or more behind it.
///
/// The label is the buddy of the first field, and the accessible name of every field without a text of its
/// own.
class FormRow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FormRow)

public:
    explicit FormRow(const QString &text, QWidget *parent = nullptr);

    /// Appends a field; `stretch` is its share of the width that is left over.
    void addField(QWidget *field, int stretch = 0);

    /// Appends empty space, which gets the width that is left over.
    void addStretch();

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateLabelWidth();

    QLabel *label;
    QHBoxLayout *row;
};
