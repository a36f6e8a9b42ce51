// A plugin for the program under test that works it as a person with mouse and keyboard would, told to by
// lines on standard input. QT_QPA_GENERIC_PLUGINS names it; the program is not changed for it.
//
// The words of a line are parted by tabs. A control is called by its accessible name and sought in the sheet
// that is open, or else in the window; a control of a card takes the card's title as the last word.
//
//     click NAME [TITLE]     type NAME TEXT     read NAME     closed     quit
//
// "closed" waits for the sheet to close, as every line waits until what it names is there. A line that has
// been obeyed comes back on standard output behind "> ", followed by the text that was read. So does "> tick
// HH:mm:ss" whenever the window's clock shows a new second.

#include "support/Controls.h"

#include <QApplication>
#include <QDialog>
#include <QGenericPlugin>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QRegularExpression>
#include <QSocketNotifier>
#include <QTimer>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QWidget *window()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (const auto sheets = widget->findChildren<QDialog *>(); !sheets.isEmpty())
            return sheets.last();
        if (qobject_cast<QMainWindow *>(widget))
            return widget;
    }
    return nullptr;
}

// Where to look for a control: in the card of that title, or in the whole window if `title` is empty.
QWidget *place(const QString &title)
{
    QWidget *whole = window();
    if (!whole || title.isEmpty())
        return whole;
    for (auto *widget : whole->findChildren<QWidget *>()) {
        auto *face = widget->inherits("Group") ? QAccessible::queryAccessibleInterface(widget) : nullptr;
        if (face && widget->isVisible() && face->text(QAccessible::Name) == title)
            return widget;
    }
    return nullptr;
}

void say(const QString &line)
{
    const QByteArray bytes = "> " + line.toUtf8() + '\n';
    if (::write(STDOUT_FILENO, bytes.constData(), size_t(bytes.size())) != bytes.size())
        qFatal("nobody listens to the hand");
}

} // namespace

class Hand final : public QObject
{
    Q_OBJECT

public:
    Hand()
    {
        qApp->installEventFilter(this);
        connect(&input, &QSocketNotifier::activated, this, &Hand::listen);
        pause.setSingleShot(true);
        connect(&pause, &QTimer::timeout, this, &Hand::act);
    }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        static const QRegularExpression clockText(u"^\\d\\d:\\d\\d:\\d\\d$"_s);
        const auto *label = event->type() == QEvent::Paint ? qobject_cast<QLabel *>(object) : nullptr;
        if (label && label->text() != shown && clockText.match(label->text()).hasMatch()) {
            shown = label->text();
            say(u"tick "_s + shown);
        }
        return false;
    }

private:
    void listen()
    {
        char bytes[4096];
        const auto count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0)
            return input.setEnabled(false);
        heard.append(bytes, count);
        pause.start(0);
    }

    // One line a turn of the event loop.
    void act()
    {
        const qsizetype end = heard.indexOf('\n');
        if (end < 0)
            return;
        const QString line = QString::fromUtf8(heard.first(end));
        if (const auto answer = obey(line.split(u'\t'))) {
            heard.remove(0, end + 1);
            say(line + *answer);
            return pause.start(0);
        }
        pause.start(10);
    }

    // What is to be said behind the line; nothing while it cannot be obeyed.
    static std::optional<QString> obey(const QStringList &words)
    {
        const QString &verb = words[0];
        const QString name = words.value(1);
        QWidget *root = place(verb == "click"_L1 ? words.value(2) : QString());
        if (!root)
            return {};
        bool isDone = false;
        if (verb == "click"_L1)
            isDone = click(root, name);
        else if (verb == "type"_L1)
            isDone = type(root, name, words.value(2));
        else if (verb == "closed"_L1)
            isDone = !qobject_cast<QDialog *>(root);
        else if (verb == "quit"_L1)
            isDone = root->close();
        else if (const auto *field = control<QLineEdit>(root, name))
            return u'\t' + field->text();
        return isDone ? std::optional(QString()) : std::nullopt;
    }

    QSocketNotifier input{STDIN_FILENO, QSocketNotifier::Read};
    QTimer pause;
    QByteArray heard;
    QString shown;
};

class HandPlugin final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "Hand.json")

public:
    QObject *create(const QString &, const QString &) override { return new Hand; }
};

#include "Hand.moc"
