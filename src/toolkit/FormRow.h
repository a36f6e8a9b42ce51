#pragma once

#include <QWidget>

class QHBoxLayout;
class QLabel;

/// A row of a form: a label at the leading side, and one field or more behind it.
///
/// The label leads the focus to the first field, and names every field that has no text of its own.
class FormRow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FormRow)

public:
    explicit FormRow(const QString &text, QWidget *parent = nullptr);

    /// Adds a field behind those so far; `stretch` is its share of the width that is left over.
    void addField(QWidget *field, int stretch = 0);

    /// Leaves what width is left over empty.
    void addSpace();

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateLabelWidth();

    QLabel *label;
    QHBoxLayout *row;
};
