// A plugin for any Qt program that writes down the moment at which its first frame has been drawn and the
// processor time it has had by then, in seconds, and its peak memory so far, in KB, and ends it. The program
// is not changed for that: QT_QPA_GENERIC_PLUGINS names the plugin, FIRST_FRAME the file.

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QGenericPlugin>
#include <QTimer>

#include <cstdlib>
#include <ctime>
#include <sys/resource.h>

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
        const double moment = seconds(CLOCK_MONOTONIC);
        const double processor = seconds(CLOCK_PROCESS_CPUTIME_ID);
        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        QFile file(qEnvironmentVariable("FIRST_FRAME"));
        if (file.open(QIODevice::WriteOnly))
            file.write(QByteArray::number(moment, 'f', 6) + ' ' + QByteArray::number(processor, 'f', 6) +
                       ' ' + QByteArray::number(qint64(usage.ru_maxrss)));
        file.close();
        std::_Exit(EXIT_SUCCESS); // what its end would cost is not measured
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
