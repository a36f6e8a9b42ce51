#pragma once

#include "db/FMDatabase.h"
#include "store/NewId.h"
#include "store/PlanStore.h"
#include "support/TemplateDatabase.h"
#include "support/WallClockFile.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

/// The installed program with a home of its own, a sound server, a wall clock, and a plugin that clicks and
/// types in it (see UiDriver.cpp). It can be ended and started again.
class BelfryProcess final
{
    Q_DISABLE_COPY_MOVE(BelfryProcess)

public:
    /// `soundServer` is for PULSE_SERVER; without one, that of this process.
    explicit BelfryProcess(const QByteArray &soundServer = qgetenv("PULSE_SERVER")) : soundServer(soundServer)
    {
        QDir().mkpath(home.filePath(QStringLiteral(".config")));
        QFile userDirs(home.filePath(QStringLiteral(".config/user-dirs.dirs")));
        if (userDirs.open(QIODevice::WriteOnly))
            userDirs.write("XDG_DOCUMENTS_DIR=\"$HOME/My Documents\"\n");
        QObject::connect(&process, &QProcess::readyReadStandardOutput, &process, [this] { listen(); });
    }

    ~BelfryProcess() { kill(); }

    /// A time of day, "HH:mm:ss", on a Monday.
    static QDateTime monday(const char *time)
    {
        return {QDate(2026, 3, 2), QTime::fromString(QString::fromLatin1(time), Qt::ISODateWithMs)};
    }

    /// Puts a timetable in place for the next start, in which every plan is for every day and plays `sound`.
    void makeDatabase(const QList<Plan> &plans, const QString &sound) const
    {
        QDir().mkpath(documents);
        QFile::copy(QStringLiteral(BELFRY_RESOURCES "/data.db"), database);
        PlanStore store(FMDatabase::databaseWithPath(database));
        for (Plan plan : plans) {
            plan.id = newId();
            plan.content = sound;
            for (const auto day : planWeekdays)
                plan.*day = true;
            store.addPlan(plan);
        }
    }

    /// Everything the program finds in its environment but the clock.
    QProcessEnvironment environment() const
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), home.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral(".config")));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
        environment.remove(QStringLiteral("XDG_DOCUMENTS_DIR"));
        for (const char *bus : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"})
            environment.insert(QString::fromLatin1(bus), QStringLiteral("disabled:"));
        environment.insert(QStringLiteral("PULSE_SERVER"), QFile::decodeName(soundServer));
        environment.insert(QStringLiteral("QT_QPA_GENERIC_PLUGINS"), QStringLiteral("uidriver"));
        environment.insert(QStringLiteral("QT_PLUGIN_PATH"), QStringLiteral(BELFRY_TEST_PLUGINS));
        return environment;
    }

    /// Starts the program, by the command `wrapper` if there is one.
    bool start(const QStringList &wrapper = {})
    {
        auto withClock = environment();
        clock.addTo(withClock);
        // What is preloaded into the program must not be loaded into the wrapper.
        const QString preload = QStringLiteral("LD_PRELOAD");
        const QString libraries = withClock.value(preload);
        withClock.remove(preload);
        process.setProcessEnvironment(withClock);
        QStringList command = wrapper + QStringList{QStringLiteral("env"), preload + u'=' + libraries,
                                                    QStringLiteral(BELFRY_INSTALLED "/bin/belfry")};
        const QString program = command.takeFirst();
        executed.clear();
        seconds.clear();
        process.start(program, command);
        return process.waitForStarted();
    }

    /// Ends the program as a crash would. False when it does not end.
    bool kill()
    {
        const qint64 id = process.processId();
        process.kill();
        const bool isOver = process.waitForFinished();
        // libfaketime could not clean up.
        for (const auto &file : {QStringLiteral("faketime_shm_%1"), QStringLiteral("sem.faketime_sem_%1")})
            QFile::remove(QStringLiteral("/dev/shm/") + file.arg(id));
        return isOver;
    }

    /// Waits until the clock has come to `moment`; false when it has not after half a minute.
    bool waitUntil(const QDateTime &moment) const
    {
        return QTest::qWaitFor([&] { return clock.now() >= moment; }, 30000);
    }

    /// Has UiDriver execute lines, their words separated by "|".
    void tell(const QStringList &lines)
    {
        for (QString line : lines)
            process.write(line.replace(u'|', u'\t').toUtf8() + '\n');
    }

    /// Has UiDriver execute lines and waits for it. False after half a minute, or when the program has ended.
    bool work(const QStringList &lines)
    {
        const qsizetype all = answers().size() + lines.size();
        tell(lines);
        const auto isOver = [&] { return answers().size() == all || process.state() != QProcess::Running; };
        return QTest::qWaitFor(isOver, 30000) && answers().size() == all;
    }

    /// Closes the window and waits until the program has ended; true when it has ended cleanly.
    bool quit()
    {
        return work({QStringLiteral("quit")}) &&
               QTest::qWaitFor([this] { return process.state() == QProcess::NotRunning; }, 30000) &&
               process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }

    /// The lines that UiDriver has executed since the start.
    const QStringList &answers() const { return executed; }

    /// The seconds that the window's clock has shown since the start, as "HH:mm:ss".
    const QStringList &ticks() const { return seconds; }

    /// What the program itself has printed since the last call.
    QString takeOutput() { return std::exchange(printed, {}); }

    const QTemporaryDir home;
    const QString documents = home.filePath(QStringLiteral("My Documents"));
    const QString database = documents + QStringLiteral("/data.db");
    WallClockFile clock;
    QProcess process;

private:
    void listen()
    {
        const QLatin1String answer("> ");
        const QLatin1String tick("> tick ");
        while (process.canReadLine()) {
            const QString line = QString::fromUtf8(process.readLine());
            if (line.startsWith(tick))
                seconds += line.sliced(tick.size()).trimmed();
            else if (line.startsWith(answer))
                executed += line.sliced(answer.size()).trimmed();
            else
                printed += line;
        }
    }

    QByteArray soundServer;
    QStringList executed;
    QStringList seconds;
    QString printed;
};
