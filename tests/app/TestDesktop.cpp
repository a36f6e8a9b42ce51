#include "app/BelfryApp.h"
#include "desktop/SingleInstance.h"
#include "store/SQLiteHelper.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int timeoutMs = 20000; // less than the D-Bus library has for a bus that does not respond

// The installed program in a home of its own, on the buses that the environment names.
class Program final : public QProcess
{
public:
    explicit Program(const QString &runtimeFolder = QString(), const QByteArray &display = QByteArray())
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_DOCUMENTS_DIR", "XDG_RUNTIME_DIR"})
            environment.insert(QString::fromLatin1(name), home.path());
        if (!runtimeFolder.isEmpty())
            environment.insert(u"XDG_RUNTIME_DIR"_s, runtimeFolder);
        environment.insert(u"XDG_ACTIVATION_TOKEN"_s, u"right to the focus"_s);
        if (!display.isEmpty()) {
            environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
            environment.insert(u"DISPLAY"_s, u':' + QString::fromLatin1(display.trimmed()));
        }
        setProcessEnvironment(environment);
        start(QStringLiteral(BELFRY_INSTALLED "/bin/belfry"), QStringList());
    }

    ~Program() override { end(*this); }

    static void end(QProcess &process)
    {
        ::kill(pid_t(process.processId()), SIGCONT);
        process.kill();
        process.waitForFinished();
    }

    bool hasEnded() const { return state() == NotRunning; }
    bool hasStarted() const { return QDir(home.path()).exists(u"data.db"_s); }
    QByteArray logged() { return log += readAllStandardError(); }

    bool endsCleanly()
    {
        terminate();
        return waitForFinished() && exitStatus() == NormalExit && exitCode() == 0;
    }

private:
    const QTemporaryDir home;
    QByteArray log;
};

// Services on a bus: notes every call, and answers it with a file descriptor or a number.
class Services final : public QDBusVirtualObject
{
public:
    QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        calls << (QStringList(message.member()) + QVariant(message.arguments()).toStringList()).join(u' ');
        const bool takesLock = message.path() == u"/org/freedesktop/login1";
        return connection.send(
            message.createReply(takesLock ? QVariant::fromValue(lock) : QVariant(uint(calls.size()))));
    }

    QDBusUnixFileDescriptor lock;
    QStringList calls;
};

} // namespace

// The program among what it finds on a desktop: message buses, here in one, services on them, a display.
class TestDesktop final : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir folder;
    QProcess bus;
    QProcess display;

    // Whether the program's main thread does, soon enough.
    static bool responds()
    {
        const auto introspect =
            QDBusMessage::createMethodCall(QStringLiteral(BELFRY_ID), u"/com/quillmoss/Belfry"_s,
                                           u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s);
        return QDBusConnection::sessionBus().call(introspect, QDBus::Block, timeoutMs).type() ==
               QDBusMessage::ReplyMessage;
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QString socket = folder.filePath(u"bus"_s);
        bus.start(u"dbus-daemon"_s,
                  {u"--session"_s, u"--nofork"_s, u"--print-address"_s, u"--address=unix:path="_s + socket});
        QVERIFY(bus.waitForReadyRead(timeoutMs)); // it listens before it prints
        for (const char *variable : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"})
            qputenv(variable, "unix:path=" + QFile::encodeName(socket));
        for (const char *variable : {"XDG_DOCUMENTS_DIR", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
            qputenv(variable, QFile::encodeName(folder.path()));
    }

    // Nothing that one case leaves behind spoils the next.
    void cleanup()
    {
        ::kill(pid_t(bus.processId()), SIGCONT);
        QDBusConnection::sessionBus().unregisterService(QStringLiteral(BELFRY_ID));
    }

    void cleanupTestCase()
    {
        for (QProcess *process : {&display, &bus})
            Program::end(*process);
    }

    void severalStarts_leaveOne()
    {
        std::array<Program, 4> programs;
        const auto ended = [&programs] {
            return std::count_if(programs.begin(), programs.end(), std::mem_fn(&Program::hasEnded));
        };
        QTRY_COMPARE_WITH_TIMEOUT(ended(), 3, timeoutMs);
        for (Program &program : programs)
            QVERIFY(program.hasEnded() ? program.exitCode() == 0 && !program.hasStarted()
                                       : program.endsCleanly());
    }

    void secondStart_raisesTheMinimisedWindowOfTheFirst()
    {
        SingleInstance first;
        QVERIFY(first.claim(true));
        BelfryApp belfry(SQLiteHelper::shared(), Resources::ofApplication());
        belfry.show();
        QWidget *window = QApplication::topLevelWidgets().first();
        window->showMinimized();
        connect(&first, &SingleInstance::activated, window, [&belfry] { belfry.activate(); });
        Program second;
        QTRY_VERIFY_WITH_TIMEOUT(second.hasEnded(), timeoutMs);
        QCOMPARE(second.exitCode(), 0);
        QVERIFY(second.logged().contains("raising its window"));
        QTRY_VERIFY(!window->isMinimized() && QApplication::activeWindow());
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), "right to the focus");
    }

    void lockFile_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("a link") << u"ln -s target %1"_s;
        QTest::newRow("a pipe") << u"mkfifo %1"_s;
        QTest::newRow("a folder") << u"mkdir %1"_s;
    }

    // Whatever lies in its place is not changed, and holds nothing up.
    void lockFile()
    {
        QFETCH(const QString, command);
        const QTemporaryDir runtimeFolder;
        const QString target = runtimeFolder.filePath(u"target"_s);
        QVERIFY(QProcess::execute(u"sh"_s,
                                  {u"-c"_s, u"cd '%2'; echo kept > target; "_s.arg(runtimeFolder.path()) +
                                                command.arg(u"" BELFRY_ID ".lock"_s)}) == 0);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtimeFolder.path()));
        QVERIFY(SingleInstance().claim(true));
        QCOMPARE(QFileInfo(target).size(), 5);
    }

    void frozenBus_isDoneWithout_andTheLockDecides()
    {
        const QTemporaryDir runtimeFolder;
        ::kill(pid_t(bus.processId()), SIGSTOP);
        Program first(runtimeFolder.path());
        QTRY_VERIFY_WITH_TIMEOUT(first.hasStarted(), timeoutMs);
        QTRY_VERIFY(first.logged().contains("Session bus is not responding"));
        ::kill(pid_t(bus.processId()), SIGCONT);
        Program second(runtimeFolder.path());
        QTRY_VERIFY_WITH_TIMEOUT(second.hasEnded(), timeoutMs);
        QVERIFY(second.exitCode() == 0 && !second.hasStarted());
        QVERIFY(second.logged().contains("Already running"));
        QVERIFY(first.endsCleanly());
    }

    // In GNOME only without input: an inhibitor there makes "Suspend" in the menu fail.
    void idleSuspend_isInhibited()
    {
        Services services;
        int lock[2];
        QVERIFY(::pipe2(lock, O_CLOEXEC | O_NONBLOCK) == 0);
        services.lock.giveFileDescriptor(lock[1]);
        auto session = QDBusConnection::sessionBus();
        QVERIFY(session.registerVirtualObject(u"/org"_s, &services, QDBusConnection::SubPath));
        const QString logind = u"org.freedesktop.login1"_s;
        for (const auto &name : {u"org.gnome.SessionManager"_s, u"org.gnome.Mutter.IdleMonitor"_s,
                                 u"org.freedesktop.PowerManagement"_s})
            QVERIFY(session.registerService(name));
        const auto fire = [&session](qsizetype watch) {
            auto fired = QDBusMessage::createSignal(u"/org/gnome/Mutter/IdleMonitor/Core"_s,
                                                    u"org.gnome.Mutter.IdleMonitor"_s, u"WatchFired"_s);
            session.send(fired << uint(watch));
        };
        Program program;
        QTRY_VERIFY_WITH_TIMEOUT(program.logged().contains("Cannot inhibit idle suspend"), timeoutMs);
        QVERIFY(session.registerService(logind)); // late, as when its package is upgraded
        QTRY_COMPARE_WITH_TIMEOUT(services.calls.size(), 3, timeoutMs);
        QCOMPARE(services.calls,
                 QStringList({u"Inhibit Belfry Belfry keeps the timetable"_s, u"AddIdleWatch 30000"_s,
                              u"Inhibit idle Belfry Belfry keeps the timetable block"_s}));
        fire(2); // the number of an answer
        QTRY_COMPARE_WITH_TIMEOUT(services.calls.size(), 5, timeoutMs);
        QCOMPARE(services.calls[3], u"Inhibit " BELFRY_ID " 0 Belfry keeps the timetable 4"_s);
        QTRY_VERIFY_WITH_TIMEOUT((fire(5), services.calls.last() == u"Uninhibit 4"), timeoutMs);
        services.lock = {};
        char byte;
        QVERIFY(::read(lock[0], &byte, 1) < 0); // the program has the other end
        QVERIFY(program.endsCleanly());
        QCOMPARE(program.logged().count("Cannot inhibit"), 1);
    }

    // It would paint the clock once a second, and each time wait for the display.
    void stoppedDisplay_doesNotHoldTheProgram()
    {
        display.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        display.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-nolisten"_s, u"tcp"_s});
        QVERIFY(display.waitForReadyRead(timeoutMs));
        Program program(QString(), display.readAllStandardOutput());
        QTRY_VERIFY_WITH_TIMEOUT(program.hasStarted() && responds(), timeoutMs);
        ::kill(pid_t(display.processId()), SIGSTOP);
        QTest::qWait(2500);
        QVERIFY(responds());
        ::kill(pid_t(display.processId()), SIGCONT);
        QVERIFY(program.endsCleanly());
    }
};

QTEST_MAIN(TestDesktop)
#include "TestDesktop.moc"
