// A plugin for the program under test that clicks and types as a user would, controlled by lines on standard
// input. QT_QPA_GENERIC_PLUGINS loads it; the program needs no change.
//
//     click NAME [TITLE]   clicks the control of that accessible name (on the card of that title)
//     type NAME TEXT       replaces the text in the field of that name
//     see TEXT             waits for a label with that text
//     background COLOR     waits until windows have that background
//     palette COLOR        sets a palette made from that color, as a desktop's own theme would
//     leave                minimises the window and activates another one
//     raised TOKEN         waits until the window or its panel is active, with that activation token
//
// Words are separated by tabs. Controls and labels are those of the sheet or alert that is open, or else of
// the window. A line is repeated until it succeeds; then it is printed on standard output, after "> ".

#include "support/Controls.h"

#include <QApplication>
#include <QDialog>
#include <QGenericPlugin>
#include <QLabel>
#include <QMainWindow>
#include <QTimer>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

QWidget *find(const QWidget *root, const char *type, const QString &title)
{
    for (auto *widget : root->findChildren<QWidget *>()) {
        const auto *label = qobject_cast<QLabel *>(widget);
        if (widget->isVisible() && widget->inherits(type) &&
            (label ? label->text() : widget->accessibleName()) == title)
            return widget;
    }
    return nullptr;
}

// Whether the line could be executed.
bool execute(QWidget *window, const QStringList &words)
{
    const auto panels = window->findChildren<QDialog *>();
    const QWidget *root = panels.isEmpty() ? window : panels.last();
    const QString argument = words.value(1);
    if (words[0] == "click"_L1) {
        const QWidget *place = words.size() > 2 ? find(root, "Group", words[2]) : root;
        return place && click(place, argument);
    }
    if (words[0] == "type"_L1)
        return type(root, argument, words.value(2));
    if (words[0] == "see"_L1)
        return find(root, "QLabel", argument);
    if (words[0] == "background"_L1)
        return QApplication::palette().window().color().name() == argument;
    if (words[0] == "palette"_L1)
        QApplication::setPalette(QPalette(QColor(argument)));
    if (words[0] == "leave"_L1) {
        window->showMinimized();
        (new QWidget(window, Qt::Window))->show();
    }
    return words[0] != "raised"_L1 || (!window->isMinimized() && root->window()->isActiveWindow() &&
                                       qEnvironmentVariable("XDG_ACTIVATION_TOKEN") == argument);
}

} // namespace

class UiDriver final : public QTimer
{
    Q_OBJECT

public:
    UiDriver()
    {
        ::fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK);
        callOnTimeout(this, &UiDriver::executeNext);
        start(10);
    }

private:
    void executeNext()
    {
        char byte = 0;
        while (!line.endsWith('\n') && ::read(STDIN_FILENO, &byte, 1) == 1)
            line += byte;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (line.endsWith('\n') && qobject_cast<QMainWindow *>(widget) &&
                execute(widget, QString::fromUtf8(line).trimmed().split(u'\t'))) {
                std::fputs(("> " + std::exchange(line, {})).constData(), stdout);
                std::fflush(stdout);
            }
        }
    }

    QByteArray line;
};

class UiDriverPlugin final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "UiDriver.json")

public:
    QObject *create(const QString &, const QString &) override { return new UiDriver; }
};

#include "UiDriver.moc"
