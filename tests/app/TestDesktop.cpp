#include "desktop/SingleInstance.h"
#include "support/BelfryProcess.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Services on a bus: notes every call, and replies with what is given for its path or with its number.
class Services final : public QDBusVirtualObject
{
public:
    QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        calls << (QStringList(message.member()) + QVariant(message.arguments()).toStringList()).join(u' ');
        return connection.send(message.createReply(replies.value(message.path(), uint(calls.size()))));
    }

    QHash<QString, QVariant> replies;
    QStringList calls;
};

QVariant dBusVariant(const QVariant &value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

} // namespace

// The installed program on a desktop: message buses, and the services on them.
class TestDesktop final : public QObject
{
    Q_OBJECT

private:
    const QTemporaryDir folder;
    QProcess sessionBus;
    QProcess systemBus;
    const QString portalName = u"org.freedesktop.portal.Desktop"_s;

    void signalBuses(int number) const
    {
        for (const QProcess *bus : {&sessionBus, &systemBus})
            ::kill(pid_t(bus->processId()), number);
    }

    // Starts a bus, and has what this process starts find it.
    void start(QProcess &bus, const char *variable, const QString &address) const
    {
        bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s,
                                     u"--address="_s + address + folder.filePath(u"bus"_s)});
        QVERIFY(bus.waitForReadyRead()); // it listens before it prints
        qputenv(variable, bus.readLine().trimmed());
    }

    // Calls a method of the program, as a desktop does; starts the program if it is not running.
    static bool call(const char *method, QVariantList arguments)
    {
        auto message =
            QDBusMessage::createMethodCall(QStringLiteral(BELFRY_ID), u"/com/quillmoss/Belfry"_s,
                                           u"org.freedesktop.Application"_s, QString::fromLatin1(method));
        arguments += QVariantMap{{u"activation-token"_s, QString::fromLatin1(method)}};
        message.setArguments(arguments);
        return QDBusConnection::sessionBus().call(message).type() == QDBusMessage::ReplyMessage;
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
            qputenv(name, QFile::encodeName(folder.path()));
        qputenv("XDG_DATA_DIRS", BELFRY_INSTALLED "/share");
        start(sessionBus, "DBUS_SESSION_BUS_ADDRESS", u"unix:path="_s);
        start(systemBus, "DBUS_SYSTEM_BUS_ADDRESS", u"unix:abstract=system"_s);
    }

    // Nothing that one case leaves behind spoils the next.
    void cleanup()
    {
        signalBuses(SIGCONT);
        auto *bus = QDBusConnection::sessionBus().interface();
        for (const QString &name : {QStringLiteral(BELFRY_ID), portalName})
            bus->unregisterService(name);
        if (const auto owner = bus->servicePid(QStringLiteral(BELFRY_ID)); owner.isValid())
            ::kill(pid_t(owner.value()), SIGKILL);
        QTRY_VERIFY(!bus->isServiceRegistered(QStringLiteral(BELFRY_ID)));
    }

    void cleanupTestCase()
    {
        for (QProcess *bus : {&sessionBus, &systemBus}) {
            bus->kill();
            bus->waitForFinished();
        }
    }

    // The next file to be opened would take the place of a closed one.
    void closedStandardStreams_areReplaced()
    {
        BelfryProcess belfry;
        belfry.setChildProcessModifier([] { ::close_range(STDIN_FILENO, STDERR_FILENO, 0); });
        belfry.launch();
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(belfry.database), 20000);
        for (int descriptor = 0; descriptor < 3; ++descriptor)
            QCOMPARE(QFile::symLinkTarget(u"/proc/%1/fd/%2"_s.arg(belfry.processId()).arg(descriptor)),
                     u"/dev/null"_s);
        QVERIFY(belfry.endsCleanly(SIGHUP));
    }

    void secondStart_raisesTheWindowOfTheFirst()
    {
        BelfryProcess first;
        BelfryProcess second;
        first.setChildProcessModifier([] { ::signal(SIGHUP, SIG_IGN); }); // as by nohup
        first.launch();
        QVERIFY(first.work({u"see|Sample chime"_s, u"leave"_s}));
        second.set("XDG_ACTIVATION_TOKEN", u"second start"_s);
        second.launch();
        QCOMPARE(second.awaitExit(), 0);
        QVERIFY(second.readAllStandardError().contains("raising its window"));
        QVERIFY(first.work({u"raised|second start"_s}));

        QVERIFY(first.work({u"leave"_s}) && call("Open", {QStringList()}));
        // With the file panel over it.
        QVERIFY(first.work({u"raised|Open"_s, u"click|Edit"_s, u"click|Edit|Sample chime"_s,
                            u"click|Choose File"_s, u"see|Look in:"_s, u"leave"_s}));
        QVERIFY(call("ActivateAction", {QString(), QVariantList()}));
        QVERIFY(first.work({u"raised|ActivateAction"_s}));

        ::kill(pid_t(first.processId()), SIGSTOP);
        second.launch();
        QCOMPARE(second.awaitExit(), 0);
        QVERIFY(second.readAllStandardError().contains("not responding"));
        ::kill(pid_t(first.processId()), SIGCONT);
        ::kill(pid_t(first.processId()), SIGHUP);
        QVERIFY(first.work({u"leave"_s}) && first.work({u"leave"_s}) && first.endsCleanly(SIGINT));
    }

    void bus_startsTheProgram()
    {
        QVERIFY(call("Activate", {}));
        auto *bus = QDBusConnection::sessionBus().interface();
        ::kill(pid_t(bus->servicePid(QStringLiteral(BELFRY_ID)).value()), SIGTERM);
        QTRY_VERIFY(!bus->isServiceRegistered(QStringLiteral(BELFRY_ID)));
    }

    // What lies in the place of the lock file is not changed, and holds nothing up.
    void otherLockFile_isIgnored()
    {
        const QTemporaryDir runtime;
        const QString path = runtime.filePath(u"" BELFRY_ID ".lock"_s);
        const QString target = runtime.filePath(u"target"_s);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
        QVERIFY(::mkfifo(QFile::encodeName(path).constData(), 0600) == 0);
        QVERIFY(SingleInstance().claim(true));
        QVERIFY(QFile::remove(path) && QFile::link(target, path));
        QVERIFY(SingleInstance().claim(true));
        QVERIFY(!QFile::exists(target));
    }

    void frozenBus_isDisabled_andTheLockDecides()
    {
        BelfryProcess first;
        first.set("XDG_RUNTIME_DIR", folder.path());
        BelfryProcess second;
        second.environment = first.environment;
        first.environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s); // "bus" in $XDG_RUNTIME_DIR is the default
        signalBuses(SIGSTOP);
        first.launch();
        QVERIFY(first.work({u"see|Sample chime"_s}));
        const QByteArray logged = first.readAllStandardError();
        QVERIFY(logged.contains("Session bus is not responding") &&
                logged.contains("System bus is not responding"));
        signalBuses(SIGCONT);
        second.launch();
        QCOMPARE(second.awaitExit(), 0);
        QVERIFY(second.readAllStandardError().contains("not reachable on the session bus"));
        QVERIFY(first.endsCleanly());
    }

    void colors_followThePortal()
    {
        const QString path = u"/org/freedesktop/portal/desktop"_s;
        const QString dark = u"background|#242428"_s;
        const QString light = u"background|#efefef"_s;
        auto session = QDBusConnection::sessionBus();
        const auto change = [&](const QString &key, uint value) {
            auto changed =
                QDBusMessage::createSignal(path, u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
            session.send(changed << u"org.freedesktop.appearance"_s << key << dBusVariant(value));
            return call("Activate", {}); // The signal has arrived when this returns.
        };
        Services portal;
        portal.replies[path] = dBusVariant(dBusVariant(1U));
        QVERIFY(session.registerVirtualObject(path, &portal) && session.registerService(portalName));
        BelfryProcess belfry;
        belfry.set("QT_QPA_PLATFORMTHEME", u"none"_s);
        belfry.launch();
        QVERIFY(belfry.work({dark}));
        portal.replies[path] = dBusVariant(dBusVariant(2U));
        QVERIFY(session.unregisterService(portalName) && session.registerService(portalName) &&
                belfry.work({light}));
        QVERIFY(change(u"contrast"_s, 1) && belfry.work({light}));
        QVERIFY(change(u"color-scheme"_s, 1) && belfry.work({dark}));
        QVERIFY(change(u"color-scheme"_s, 0) && belfry.work({light}));
        // A palette of the desktop's own stays.
        QVERIFY(belfry.work({u"palette|#d3d3d3"_s}) && change(u"color-scheme"_s, 1));
        QVERIFY(belfry.work({u"background|#d3d3d3"_s}) && belfry.endsCleanly());
    }

    // On GNOME only without input: an inhibitor there makes "Suspend" in the menu fail.
    void idleSuspend_isInhibited()
    {
        Services services;
        int lock[2];
        QVERIFY(::pipe2(lock, O_CLOEXEC | O_NONBLOCK) == 0);
        auto session = QDBusConnection::sessionBus();
        auto system = QDBusConnection::systemBus();
        for (QDBusConnection *bus : {&session, &system})
            QVERIFY(bus->registerVirtualObject(u"/org"_s, &services, QDBusConnection::SubPath));
        const auto sees = [&services](const QString &call) {
            return QTest::qWaitFor([&] { return services.calls.value(services.calls.size() - 1) == call; },
                                   20000);
        };
        const auto fire = [&session](uint watch) {
            auto fired = QDBusMessage::createSignal(u"/org/gnome/Mutter/IdleMonitor/Core"_s,
                                                    u"org.gnome.Mutter.IdleMonitor"_s, u"WatchFired"_s);
            session.send(fired << watch);
        };
        const QString logind = u"org.freedesktop.login1"_s;
        const QString powerManager = u"org.freedesktop.PowerManagement"_s;
        const QString inhibitLogind = u"Inhibit idle Belfry Belfry keeps the timetable block"_s;
        const QString inhibit = u"Inhibit Belfry Belfry keeps the timetable"_s;
        const QString inhibitGnome = u"Inhibit " BELFRY_ID " 0 Belfry keeps the timetable 4"_s;

        QVERIFY(session.registerService(powerManager));
        BelfryProcess belfry;
        belfry.launch();
        QVERIFY(sees(inhibit));
        QByteArray logged;
        QTRY_VERIFY((logged += belfry.readAllStandardError()).contains("Cannot inhibit idle suspend"));
        // Late or again, as when their packages are upgraded.
        QVERIFY(system.registerService(logind) && sees(inhibitLogind));
        QVERIFY(session.unregisterService(powerManager) && session.registerService(powerManager));
        QVERIFY(sees(inhibit));
        services.replies[u"/org/freedesktop/login1"_s] =
            QVariant::fromValue(QDBusUnixFileDescriptor(lock[1]));
        ::close(lock[1]);
        QVERIFY(system.unregisterService(logind) && system.registerService(logind) && sees(inhibitLogind));
        // A number is that of the call that it replied to.
        QVERIFY(session.registerService(u"org.gnome.SessionManager"_s));
        QVERIFY(session.registerService(u"org.gnome.Mutter.IdleMonitor"_s) && sees(u"Uninhibit 5"_s));
        QVERIFY(session.unregisterService(u"org.gnome.SessionManager"_s));
        QVERIFY(session.registerService(u"org.gnome.SessionManager"_s));
        fire(6);
        QVERIFY(sees(u"AddUserActiveWatch"_s));
        QTRY_VERIFY((fire(9), services.calls.last() == u"Uninhibit 8"));
        QCOMPARE(services.calls.mid(4),
                 (QStringList{inhibitGnome, u"AddIdleWatch 30000"_s, u"Uninhibit 5"_s, inhibitGnome,
                              u"AddUserActiveWatch"_s, u"Uninhibit 8"_s}));

        services.replies.clear();
        char byte;
        QVERIFY(::read(lock[0], &byte, 1) < 0); // the program has the other end
        QVERIFY(belfry.endsCleanly());
        QCOMPARE(belfry.readAllStandardError(), QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestDesktop)
#include "TestDesktop.moc"
