#include "toolkit/Alert.h"

#include "toolkit/FocusRing.h"
#include "toolkit/Style.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

QMessageBox::ButtonRole roleInBox(Alert::Role role)
{
    switch (role) {
    case Alert::Role::destructive:
        return QMessageBox::DestructiveRole;
    case Alert::Role::cancel:
        return QMessageBox::RejectRole;
    case Alert::Role::standard:
        break;
    }
    return QMessageBox::AcceptRole;
}

void addButton(QMessageBox *box, QWidget *over, const Alert::Button &wanted)
{
    QPushButton *button = box->addButton(wanted.text, roleInBox(wanted.role));
    if (wanted.role == Alert::Role::destructive) {
        QPalette palette = button->palette();
        palette.setColor(QPalette::ButtonText, Style::accent(Style::Accent::red, palette));
        button->setPalette(palette);
    } else if (wanted.role == Alert::Role::standard || !box->defaultButton()) {
        box->setDefaultButton(button);
    }
    if (wanted.role == Alert::Role::cancel || !box->escapeButton())
        box->setEscapeButton(button);
    QObject::connect(box, &QMessageBox::finished, over, [box, button, action = wanted.action] {
        // Closed by the window's own button, the box knows of no click.
        const QAbstractButton *answer = box->clickedButton() ? box->clickedButton() : box->escapeButton();
        if (answer == button && action)
            action();
    });
}

// The box would break even a short message early, to a width that is made for long texts, and read it as
// HTML.
void showAsItStands(QMessageBox *box, const QString &message)
{
    for (QLabel *label : box->findChildren<QLabel *>()) {
        if (label->text() == message) {
            label->setWordWrap(false);
            label->setTextFormat(Qt::PlainText);
        }
    }
}

} // namespace

QMessageBox *Alert::show(QWidget *over, const QString &title, const QString &message,
                         const QList<Button> &buttons)
{
    auto *box = new QMessageBox(over->window());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setWindowTitle(title);
    box->setTextFormat(Qt::RichText);
    box->setText(u"<b>"_s + title.toHtmlEscaped() + u"</b>"_s);
    box->setInformativeText(message);
    showAsItStands(box, message);
    for (const Button &button : buttons)
        addButton(box, over, button);
    new FocusRing(box);
    box->open();
    return box;
}
