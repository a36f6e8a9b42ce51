#pragma once

#include "db/FMDatabase.h"
#include "support/TemplateDatabase.h"

#include <QDir>
#include <QProcess>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

/// The installed program, as a user has it: with a home, and with a UiDriver that operates its window (see
/// UiDriver.cpp). It can be ended and started again.
class BelfryProcess final : public QProcess
{
    Q_DISABLE_COPY_MOVE(BelfryProcess)

public:
    BelfryProcess()
    {
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
            set(name, home.path());
        environment.remove(QStringLiteral("XDG_DOCUMENTS_DIR"));
        writeFile(home.filePath(QStringLiteral("user-dirs.dirs")),
                  "XDG_DOCUMENTS_DIR=\"$HOME/My Documents\"\n");
        // Qt's thread for D-Bus may not have freed its data yet when the program ends.
        const QString suppressions = home.filePath(QStringLiteral("suppressions"));
        writeFile(suppressions, "leak:libQt6Core\n");
        set("LSAN_OPTIONS", QStringLiteral("print_suppressions=0:suppressions=") + suppressions);
        set("QT_QPA_GENERIC_PLUGINS", QStringLiteral("uidriver"));
        set("QT_PLUGIN_PATH", QStringLiteral(BELFRY_TEST_PLUGINS));
        connect(this, &QProcess::readyReadStandardOutput, this, &BelfryProcess::readOutput);
    }

    ~BelfryProcess() override { crash(); }

    /// Sets a variable of its environment, for the next start.
    void set(const char *name, const QString &value) { environment.insert(QString::fromLatin1(name), value); }

    /// Sets its wall clock, for the next start or while it runs, to a time of day, "HH:mm:ss", on a Monday.
    /// Its timers and its sound keep to the real time.
    void setClock(const QString &time)
    {
        const QString file = home.filePath(QStringLiteral("clock"));
        set("LD_PRELOAD", QStringLiteral(BELFRY_FAKETIME));
        set("FAKETIME_TIMESTAMP_FILE", file);
        set("FAKETIME_NO_CACHE", QStringLiteral("1"));
        // Without these two the sound breaks.
        set("FAKETIME_DONT_FAKE_MONOTONIC", QStringLiteral("1"));
        set("FAKETIME_FORCE_MONOTONIC_FIX", QStringLiteral("0"));
        set("NO_FAKE_STAT", QStringLiteral("1"));
        set("LC_NUMERIC", QStringLiteral("C"));
        // A sanitizer would insist on being the first library of a program.
        set("ASAN_OPTIONS", QStringLiteral("verify_asan_link_order=0"));
        const QDateTime moment(QDate(2026, 3, 2), QTime::fromString(time));
        clockOffset = moment.toMSecsSinceEpoch() - QDateTime::currentMSecsSinceEpoch();
        writeFile(file, QString::asprintf("%+.3f\n", double(clockOffset) / 1000).toLatin1());
    }

    /// What its wall clock reads at a real moment in ms since 1970.
    QDateTime clockAt(qint64 real) const { return QDateTime::fromMSecsSinceEpoch(real + clockOffset); }

    /// Turns the sample plan into "Bell", on Monday from 08:00 to 08:01 with `sound` in a loop, for the next
    /// start.
    void makeBell(const QString &sound) const
    {
        QDir().mkpath(documents);
        QFile::copy(QStringLiteral(BELFRY_INSTALLED "/share/belfry/data.db"), database);
        const auto db = FMDatabase::databaseWithPath(database);
        QVERIFY(db->open());
        const auto update = db->executeQuery(
            QStringLiteral("update plan set title = 'Bell', begin = '08:00', end = '08:01', content = ?,"
                           " isLoop = 'true', week1 = 'true'"),
            {sound});
        QVERIFY(update && !update->next());
    }

    /// Starts the program: the installed one, or a copy of it.
    void launch(const QString &program = QStringLiteral(BELFRY_INSTALLED "/bin/belfry"))
    {
        executed.clear();
        setProcessEnvironment(environment);
        start(program, QStringList());
    }

    /// Has UiDriver execute lines, their words separated by "|".
    void tell(const QStringList &lines)
    {
        for (QString line : lines)
            write(line.replace(u'|', u'\t').toUtf8() + '\n');
    }

    /// Has UiDriver execute lines and waits for it. False after a minute, or when the program has ended.
    bool work(const QStringList &lines)
    {
        const qsizetype all = executed.size() + lines.size();
        tell(lines);
        const auto isOver = [&] { return executed.size() == all || state() == NotRunning; };
        return QTest::qWaitFor(isOver, 60000) && executed.size() == all;
    }

    /// The exit code, once the program has ended; -1 when it does not end or has crashed.
    int awaitExit() { return waitForFinished() && exitStatus() == NormalExit ? exitCode() : -1; }

    /// Whether the signal ends the program cleanly.
    bool endsCleanly(int signal = SIGTERM)
    {
        ::kill(pid_t(processId()), signal);
        return awaitExit() == 0;
    }

    /// Ends the program as a crash would.
    void crash()
    {
        const qint64 id = processId();
        kill();
        waitForFinished();
        // libfaketime could not clean up.
        for (const auto &file : {QStringLiteral("faketime_shm_%1"), QStringLiteral("sem.faketime_sem_%1")})
            QFile::remove(QStringLiteral("/dev/shm/") + file.arg(id));
    }

    /// What the program itself has printed since the last call.
    QString takeOutput() { return std::exchange(printed, {}); }

    const QTemporaryDir home;
    const QString documents = home.filePath(QStringLiteral("My Documents"));
    const QString database = documents + QStringLiteral("/data.db");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QStringList executed; ///< The lines that UiDriver has executed since the start.

private:
    // In one step: the program may read it at any moment.
    static void writeFile(const QString &path, const QByteArray &content)
    {
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) < 0 || !file.commit())
            qFatal("cannot write a file");
    }

    void readOutput()
    {
        while (canReadLine()) {
            const QString line = QString::fromUtf8(readLine());
            if (line.startsWith(u"> "))
                executed += line;
            else
                printed += line;
        }
    }

    QString printed;
    qint64 clockOffset = 0;
};
