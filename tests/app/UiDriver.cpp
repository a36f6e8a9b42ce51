// A plugin for the program under test that clicks and types as a user would, controlled by lines on standard
// input. QT_QPA_GENERIC_PLUGINS loads it; the program needs no change.
//
// The words of a line are separated by tabs. A control is named by its accessible name and looked up in the
// sheet that is open, or else in the window; a control of a card takes the card's title as the last word.
//
//     click NAME [TITLE]     type NAME TEXT     read NAME     closed     quit
//
// "closed" waits for the sheet to close; every line waits until what it names is there. A line that has been
// executed is printed on standard output after "> ", followed by the text that was read. So is "> tick
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
QWidget *rootWidget(const QString &title)
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

void print(const QString &line)
{
    const QByteArray bytes = "> " + line.toUtf8() + '\n';
    if (::write(STDOUT_FILENO, bytes.constData(), size_t(bytes.size())) != bytes.size())
        qFatal("standard output is closed");
}

} // namespace

class UiDriver final : public QObject
{
    Q_OBJECT

public:
    UiDriver()
    {
        qApp->installEventFilter(this);
        connect(&input, &QSocketNotifier::activated, this, &UiDriver::readInput);
        pause.setSingleShot(true);
        connect(&pause, &QTimer::timeout, this, &UiDriver::executeNext);
    }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        static const QRegularExpression clockText(u"^\\d\\d:\\d\\d:\\d\\d$"_s);
        const auto *label = event->type() == QEvent::Paint ? qobject_cast<QLabel *>(object) : nullptr;
        if (label && label->text() != shownTime && clockText.match(label->text()).hasMatch()) {
            shownTime = label->text();
            print(u"tick "_s + shownTime);
        }
        return false;
    }

private:
    void readInput()
    {
        char bytes[4096];
        const auto count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0)
            return input.setEnabled(false);
        buffer.append(bytes, count);
        pause.start(0);
    }

    // One line per event loop iteration.
    void executeNext()
    {
        const qsizetype end = buffer.indexOf('\n');
        if (end < 0)
            return;
        const QString line = QString::fromUtf8(buffer.first(end));
        if (const auto answer = execute(line.split(u'\t'))) {
            buffer.remove(0, end + 1);
            print(line + *answer);
            return pause.start(0);
        }
        pause.start(10);
    }

    // What to print after the line; nothing while it cannot be executed.
    static std::optional<QString> execute(const QStringList &words)
    {
        const QString &verb = words[0];
        const QString name = words.value(1);
        QWidget *root = rootWidget(verb == "click"_L1 ? words.value(2) : QString());
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
    QByteArray buffer;
    QString shownTime;
};

class UiDriverPlugin final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "UiDriver.json")

public:
    QObject *create(const QString &, const QString &) override { return new UiDriver; }
};

#include "UiDriver.moc"
