// A plugin for any Qt program that writes down the moment at which its first frame has been drawn and the
// processor time it has had by then, in seconds, and ends it. The program is not changed for that:
// QT_QPA_GENERIC_PLUGINS names the plugin, FIRST_FRAME the file.

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QGenericPlugin>
#include <QTimer>

#include <ctime>

class FirstFrame final : public QObject
{
public:
    FirstFrame() { QCoreApplication::instance()->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        // All paint events of a frame come before the next turn of the event loop.
        if (event->type() == QEvent::Paint && !isSeen) {
            isSeen = true;
            QTimer::singleShot(0, this, &FirstFrame::note);
        }
        return false;
    }

private:
    static double seconds(clockid_t clock)
    {
        timespec now;
        clock_gettime(clock, &now);
        return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
    }

    static void note()
    {
        QFile file(qEnvironmentVariable("FIRST_FRAME"));
        if (file.open(QIODevice::WriteOnly))
            file.write(QByteArray::number(seconds(CLOCK_MONOTONIC), 'f', 6) + ' ' +
                       QByteArray::number(seconds(CLOCK_PROCESS_CPUTIME_ID), 'f', 6));
        file.close();
        QCoreApplication::quit();
    }

    bool isSeen = false;
};

class FirstFramePlugin final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "FirstFrame.json")

public:
    QObject *create(const QString &, const QString &) override { return new FirstFrame; }
};

#include "FirstFrame.moc"
