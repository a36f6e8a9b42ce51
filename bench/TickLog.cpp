// A plugin for Belfry that writes down each tick of its scheduler, and beside it, in the same event loop,
// each event of free-running timers of one second: what the tick is compared with. The program is not changed
// for that: QT_QPA_GENERIC_PLUGINS names the plugin, TICK_LOG the file. A line is a name and the time in ms
// since 1970.

#include <QApplication>
#include <QDateTime>
#include <QFile>
#include <QGenericPlugin>
#include <QTimer>
#include <QWidget>

using namespace Qt::StringLiterals;

class TickLog final : public QObject
{
    Q_OBJECT

public:
    TickLog() : file(qEnvironmentVariable("TICK_LOG"))
    {
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            qFatal("TICK_LOG: %s", qUtf8Printable(file.errorString()));
        QTimer::singleShot(0, this, &TickLog::start);
    }

private Q_SLOTS:
    // The scheduler announces several changes in a tick; the first one counts.
    void noteTick()
    {
        if (isTicking)
            return;
        isTicking = true;
        note("tick");
        QMetaObject::invokeMethod(
            this, [this] { isTicking = false; }, Qt::QueuedConnection);
    }

private:
    void start()
    {
        for (const QWidget *window : QApplication::topLevelWidgets()) {
            for (const QObject *object : window->findChildren<QObject *>()) {
                if (object->metaObject()->className() == "Scheduler"_ba)
                    connect(object, SIGNAL(objectWillChange()), this, SLOT(noteTick()));
            }
        }
        for (const int phase : {500, 995})
            QTimer::singleShot((phase + 1000 - QTime::currentTime().msec()) % 1000, Qt::PreciseTimer, this,
                               [this, phase] { run(phase); });
    }

    // A timer that began at that phase of a second, in ms.
    void run(int phase)
    {
        auto *timer = new QTimer(this);
        timer->setTimerType(Qt::PreciseTimer);
        connect(timer, &QTimer::timeout, this,
                [this, name = "free" + QByteArray::number(phase)] { note(name); });
        timer->start(1000);
    }

    void note(const QByteArray &name)
    {
        file.write(name + ' ' + QByteArray::number(QDateTime::currentMSecsSinceEpoch()) + '\n');
    }

    QFile file;
    bool isTicking = false;
};

class TickLogPlugin final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "TickLog.json")

public:
    QObject *create(const QString &, const QString &) override { return new TickLog; }
};

#include "TickLog.moc"
