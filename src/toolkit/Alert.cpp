#include "toolkit/Alert.h"

#include "toolkit/ModalPanel.h"
#include "toolkit/Style.h"

#include <QDialogButtonBox>
#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int minimumWidth = 280;
/// Where longer lines of a message are broken.
constexpr int textWidth = 400;

class DestructiveButton final : public QPushButton
{
public:
    explicit DestructiveButton(const QString &text) : QPushButton(text) { updateColor(); }

protected:
    void changeEvent(QEvent *event) override
    {
        QPushButton::changeEvent(event);
        if (event->type() == QEvent::PaletteChange)
            updateColor();
    }

private:
    void updateColor()
    {
        QPalette colors = palette();
        colors.setColor(QPalette::ButtonText, Style::accent(Style::Accent::red, colors));
        setPalette(colors);
    }
};

QLabel *makeLabel(const QString &text, const QFont &font)
{
    auto *label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setFont(font);
    label->setText(text);
    label->setWordWrap(true);
    const int width = label->fontMetrics().size(0, text).width() + 1;
    label->setFixedWidth(qBound(minimumWidth, width, Style::scaledToFont(textWidth, font)));
    return label;
}

QPushButton *addButton(QDialogButtonBox *box, const Alert::Button &button)
{
    switch (button.role) {
    case Alert::Role::standard:
        return box->addButton(button.text, QDialogButtonBox::AcceptRole);
    case Alert::Role::cancel:
        return box->addButton(button.text, QDialogButtonBox::RejectRole);
    case Alert::Role::destructive:
        break;
    }
    auto *added = new DestructiveButton(button.text);
    box->addButton(added, QDialogButtonBox::DestructiveRole);
    return added;
}

// Adds the buttons, and returns the index of the one that Escape stands for.
qsizetype addButtons(QDialogButtonBox *box, QDialog *panel, const QList<Alert::Button> &buttons)
{
    qsizetype escape = -1;
    const QPushButton *defaultButton = nullptr;
    for (qsizetype i = 0; i < buttons.size(); ++i) {
        QPushButton *button = addButton(box, buttons[i]);
        QObject::connect(button, &QPushButton::clicked, panel, [panel, i] { panel->done(int(i) + 1); });
        const Alert::Role role = buttons[i].role;
        if (role == Alert::Role::cancel || escape < 0)
            escape = i;
        if (role == Alert::Role::standard || (role == Alert::Role::cancel && !defaultButton)) {
            defaultButton = button;
            button->setDefault(true);
            button->setFocus();
        }
    }
    return escape;
}

} // namespace

QDialog *Alert::show(QWidget *parent, const QString &title, const QString &message,
                     const QList<Button> &buttons)
{
    auto *panel = new ModalPanel(Backdrop::Position::center, title, parent);
    panel->setAccessibleDescription(message);
    QFont bold = panel->font();
    bold.setBold(true);
    auto *box = new QDialogButtonBox;
    auto *column = new QVBoxLayout(panel);
    constexpr int margin = 2 * Style::inset;
    column->setContentsMargins(margin, margin, margin, margin);
    column->addWidget(makeLabel(title, bold));
    column->addWidget(makeLabel(message, panel->font()));
    column->addSpacing(Style::spacing);
    column->addWidget(box);

    const qsizetype escape = addButtons(box, panel, buttons);
    QObject::connect(panel, &QDialog::finished, parent, [buttons, escape](int result) {
        const auto &action = buttons[result == QDialog::Rejected ? escape : result - 1].action;
        if (action)
            action();
    });
    panel->open();
    return panel;
}
