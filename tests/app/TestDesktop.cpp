#include "platform/SingleInstance.h"

#include <QDBusConnection>
#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>
#include <csignal>

using namespace Qt::StringLiterals;

namespace {

// In milliseconds: less than the D-Bus library has with a bus that does not answer.
constexpr int patience = 20000;

// The built program, in a home of its own, on the buses that the environment names.
class Program final : public QProcess
{
public:
    Program()
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_DOCUMENTS_DIR"})
            environment.insert(QString::fromLatin1(name), home.path());
        environment.insert(u"XDG_ACTIVATION_TOKEN"_s, u"right to the focus"_s);
        setProcessEnvironment(environment);
        start(QStringLiteral(BELFRY_INSTALLED "/bin/belfry"), QStringList());
    }

    ~Program() override
    {
        kill();
        waitForFinished();
    }

    bool hasEnded() const { return state() == NotRunning; }

    QStringList timetable() const { return QDir(home.path()).entryList({u"data.db*"_s}); }

    // What it has logged so far.
    QString logged()
    {
        log += readAllStandardError();
        return QString::fromUtf8(log);
    }

    // Whether it ends in good order, and leaves nothing beside the timetable.
    bool endsBy(int signal)
    {
        ::kill(pid_t(processId()), signal);
        return waitForFinished() && exitStatus() == NormalExit && exitCode() == 0 &&
               timetable() == QStringList(u"data.db"_s);
    }

private:
    const QTemporaryDir home;
    QByteArray log;
};

} // namespace

// The built program among what it finds on a desktop: message buses, here in one.
class TestDesktop final : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir folder;
    const QString socket = folder.filePath(u"bus"_s);
    QProcess bus;

    void startBus()
    {
        end(bus);
        QFile::remove(socket);
        bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--address=unix:path="_s + socket});
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(socket), patience);
    }

    static void end(QProcess &process)
    {
        process.kill();
        process.waitForFinished();
    }

private Q_SLOTS:
    void initTestCase()
    {
        startBus();
        for (const char *variable : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"})
            qputenv(variable, "unix:path=" + QFile::encodeName(socket));
    }

    void severalStarts_leaveOne()
    {
        std::array<Program, 4> programs;
        const auto ended = [&programs] {
            return std::count_if(programs.begin(), programs.end(), std::mem_fn(&Program::hasEnded));
        };
        QTRY_COMPARE_WITH_TIMEOUT(ended(), 3, patience);
        for (Program &program : programs) {
            if (!program.hasEnded())
                QVERIFY(program.endsBy(SIGTERM));
            else
                QVERIFY(program.exitCode() == 0 && program.timetable().isEmpty());
        }
    }

    void secondStart_bringsTheFirstToTheFront()
    {
        SingleInstance first;
        QVERIFY(first.claim());
        const QSignalSpy activated(&first, &SingleInstance::activated);
        const Program second;
        QTRY_VERIFY_WITH_TIMEOUT(second.hasEnded(), patience);
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(activated.size(), 1);
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), "right to the focus");
        QVERIFY(QDBusConnection::sessionBus().unregisterService(QStringLiteral(BELFRY_ID)));
    }

    void busThatFails_isDoneWithout()
    {
        Program program;
        QTRY_VERIFY_WITH_TIMEOUT(!program.timetable().isEmpty(), patience);
        end(bus);
        QVERIFY(!program.waitForFinished(500));
        QVERIFY(program.endsBy(SIGHUP));

        startBus();
        ::kill(pid_t(bus.processId()), SIGSTOP);
        Program other;
        QTRY_VERIFY_WITH_TIMEOUT(!other.timetable().isEmpty(), patience);
        QVERIFY(other.endsBy(SIGTERM));
        QVERIFY(other.logged().contains(u"session does not answer"_s));
    }

    void cleanupTestCase() { end(bus); }
};

QTEST_GUILESS_MAIN(TestDesktop)
#include "TestDesktop.moc"
