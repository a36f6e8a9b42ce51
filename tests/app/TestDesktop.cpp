#include "platform/SingleInstance.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
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

// The built program, in a home of its own, on the buses that the environment names, with the hand on it (see
// Hand.cpp). Its runtime folder is its home if it is not told another one.
class Program final : public QProcess
{
public:
    explicit Program(const QString &runtimeFolder = QString())
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_DOCUMENTS_DIR"})
            environment.insert(QString::fromLatin1(name), home.path());
        if (!runtimeFolder.isEmpty())
            environment.insert(u"XDG_RUNTIME_DIR"_s, runtimeFolder);
        environment.insert(u"QT_QPA_GENERIC_PLUGINS"_s, u"hand"_s);
        environment.insert(u"QT_PLUGIN_PATH"_s, QStringLiteral(BELFRY_TEST_PLUGINS));
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

    // Has the hand obey `line`; false when it cannot.
    bool work(const QByteArray &line)
    {
        QByteArray answers;
        write(line + '\n');
        return QTest::qWaitFor([&] { return (answers += readAllStandardOutput()).contains("> " + line); },
                               patience);
    }

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

// The session manager of a desktop, as far as it gives locks.
class SessionManager final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager")

public:
    QStringList locks;

public Q_SLOTS:
    Q_SCRIPTABLE uint Inhibit(const QString &id, uint, const QString &why, uint what)
    {
        locks << id + u'|' + why + u'|' + QString::number(what);
        return 1;
    }
};

// The power manager of other desktops.
class PowerManager final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.PowerManagement.Inhibit")

public:
    QStringList locks;

public Q_SLOTS:
    Q_SCRIPTABLE uint Inhibit(const QString &program, const QString &why)
    {
        locks << program + u'|' + why;
        return 1;
    }
};

} // namespace

// The built program among what it finds on a desktop: message buses, here in one, and a login manager.
class TestDesktop final : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir folder;
    const QString socket = folder.filePath(u"bus"_s);
    QProcess bus;
    QProcess loginManager;

    void startBus()
    {
        end(bus);
        QFile::remove(socket);
        bus.start(u"dbus-daemon"_s,
                  {u"--session"_s, u"--nofork"_s, u"--print-address"_s, u"--address=unix:path="_s + socket});
        QVERIFY(bus.waitForReadyRead(patience)); // it listens before it prints
    }

    static void end(QProcess &process)
    {
        process.kill();
        process.waitForFinished();
    }

    void startLoginManager(const QStringList &kind)
    {
        end(loginManager);
        // The Python of the system, which has the mock.
        loginManager.start(u"/usr/bin/python3"_s, QStringList{u"-m"_s, u"dbusmock"_s, u"--system"_s} + kind);
    }

    // The locks that the login manager has given: "what|who|why|mode" of each.
    static QStringList locks()
    {
        const QDBusMessage reply = QDBusConnection::systemBus().call(
            QDBusMessage::createMethodCall(u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
                                           u"org.freedesktop.login1.Manager"_s, u"ListInhibitors"_s));
        if (reply.type() != QDBusMessage::ReplyMessage)
            return {reply.errorMessage()};
        QStringList locks;
        const auto list = reply.arguments().first().value<QDBusArgument>();
        for (list.beginArray(); !list.atEnd();) {
            std::array<QString, 4> texts;
            list.beginStructure();
            list >> texts[0] >> texts[1] >> texts[2] >> texts[3];
            list.endStructure();
            locks << QStringList(texts.begin(), texts.end()).join(u'|');
        }
        list.endArray();
        return locks;
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
        QVERIFY(first.claim(true));
        const QSignalSpy activated(&first, &SingleInstance::activated);
        Program second;
        QTRY_VERIFY_WITH_TIMEOUT(second.hasEnded(), patience);
        QCOMPARE(second.exitCode(), 0);
        QVERIFY(second.logged().contains(u"comes to the front"_s));
        QCOMPARE(activated.size(), 1);
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), "right to the focus");
        QVERIFY(QDBusConnection::sessionBus().unregisterService(QStringLiteral(BELFRY_ID)));
    }

    void minimisedWindow_isThereAgainAfterASecondStart()
    {
        Program first;
        QVERIFY(first.work("minimise"));
        const Program second;
        QVERIFY(first.work("restored"));
        QVERIFY(first.endsBy(SIGTERM));
    }

    void secondStart_findsTheFirstThatTheBusDoesNotKnow()
    {
        const QTemporaryDir runtimeFolder;
        Program killed(runtimeFolder.path());
        QTRY_VERIFY_WITH_TIMEOUT(!killed.timetable().isEmpty(), patience);
        killed.kill(); // and leaves no lock behind
        QVERIFY(killed.waitForFinished());

        ::kill(pid_t(bus.processId()), SIGSTOP);
        Program first(runtimeFolder.path());
        QTRY_VERIFY_WITH_TIMEOUT(!first.timetable().isEmpty(), patience);
        ::kill(pid_t(bus.processId()), SIGCONT);
        Program second(runtimeFolder.path());
        QTRY_VERIFY_WITH_TIMEOUT(second.hasEnded(), patience);
        QVERIFY(second.exitCode() == 0 && second.timetable().isEmpty());
        QVERIFY(second.logged().contains(u"running already"_s));
        QVERIFY(first.endsBy(SIGTERM));
    }

    void idleLock_isHeldWhileTheProgramRuns()
    {
        const QStringList held{u"idle|Belfry|Belfry keeps the timetable|block"_s};
        const QStringList logind{u"--template"_s, u"logind"_s};
        SessionManager sessionManager;
        PowerManager powerManager;
        auto session = QDBusConnection::sessionBus();
        QVERIFY(session.registerObject(u"/org/gnome/SessionManager"_s, &sessionManager,
                                       QDBusConnection::ExportScriptableSlots));
        QVERIFY(session.registerService(u"org.gnome.SessionManager"_s));
        QVERIFY(session.registerObject(u"/org/freedesktop/PowerManagement/Inhibit"_s, &powerManager,
                                       QDBusConnection::ExportScriptableSlots));
        QVERIFY(session.registerService(u"org.freedesktop.PowerManagement"_s));
        startLoginManager(logind);
        QTRY_COMPARE_WITH_TIMEOUT(locks(), QStringList(), patience);
        Program program;
        QTRY_COMPARE_WITH_TIMEOUT(locks(), held, patience);
        QTRY_COMPARE_WITH_TIMEOUT(sessionManager.locks,
                                  QStringList(u"com.quillmoss.Belfry|Belfry keeps the timetable|4"_s),
                                  patience);
        QTRY_COMPARE_WITH_TIMEOUT(powerManager.locks, QStringList(u"Belfry|Belfry keeps the timetable"_s),
                                  patience);
        startLoginManager(logind); // as its package does when it is renewed
        QTRY_COMPARE_WITH_TIMEOUT(locks(), held, patience);
        QVERIFY(program.endsBy(SIGTERM));
        QTRY_COMPARE_WITH_TIMEOUT(locks(), QStringList(), patience);
        QCOMPARE(program.logged(), QString());
    }

    void idleLock_thatIsNotGivenIsLoggedOnce()
    {
        end(loginManager);
        Program program;
        QTRY_VERIFY_WITH_TIMEOUT(program.logged().contains(u"may fall asleep"_s), patience);
        startLoginManager({u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
                           u"org.freedesktop.login1.Manager"_s}); // one that knows of no locks
        QTRY_VERIFY_WITH_TIMEOUT(locks().first().contains(u"ListInhibitors"_s), patience);
        QVERIFY(!program.waitForFinished(500));
        QCOMPARE(program.logged().count(u"may fall asleep"_s), 1);
        QVERIFY(program.endsBy(SIGINT));
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

    void cleanupTestCase()
    {
        end(loginManager);
        end(bus);
    }
};

QTEST_GUILESS_MAIN(TestDesktop)
#include "TestDesktop.moc"
