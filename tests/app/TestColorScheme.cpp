#include "app/ColorScheme.h"
#include "toolkit/Style.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

// The settings portal of a desktop.
class Portal final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    uint colorScheme = 1;

public Q_SLOTS:
    Q_SCRIPTABLE QDBusVariant Read(const QString &, const QString &)
    {
        return QDBusVariant(QVariant::fromValue(QDBusVariant(colorScheme)));
    }

Q_SIGNALS:
    Q_SCRIPTABLE void SettingChanged(const QString &group, const QString &key, const QDBusVariant &value);
};

class TestColorScheme final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void colors_followThePortal()
    {
        QProcess bus;
        bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        const auto end = qScopeGuard([&bus] {
            bus.kill();
            bus.waitForFinished();
        });
        QVERIFY(bus.waitForReadyRead());
        const QByteArray address = bus.readLine().trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        const QString name = u"org.freedesktop.portal.Desktop"_s;
        Portal portal;
        auto desktop = QDBusConnection::connectToBus(QString::fromLatin1(address), u"desktop"_s);
        desktop.registerObject(u"/org/freedesktop/portal/desktop"_s, &portal,
                               QDBusConnection::ExportScriptableContents);
        const auto isDark = [] { return Style::isDark(QApplication::palette()); };
        const auto change = [&portal](const QString &key, uint value) {
            Q_EMIT portal.SettingChanged(u"org.freedesktop.appearance"_s, key, QDBusVariant(value));
        };
        QVERIFY(desktop.registerService(name));
        const ColorScheme scheme;
        QTRY_VERIFY(isDark());
        portal.colorScheme = 2;
        QVERIFY(desktop.unregisterService(name) && desktop.registerService(name));
        QTRY_VERIFY(!isDark());
        change(u"contrast"_s, 1);
        QVERIFY(!QTest::qWaitFor(isDark, 200));
        change(u"color-scheme"_s, 1);
        QTRY_VERIFY(isDark());
        change(u"color-scheme"_s, 0);
        QTRY_VERIFY(!isDark());

        // A palette of the desktop's own stays.
        QApplication::setPalette(QPalette(Qt::lightGray));
        change(u"color-scheme"_s, 1);
        QVERIFY(!QTest::qWaitFor(isDark, 200));
    }
};

QTEST_MAIN(TestColorScheme)
#include "TestColorScheme.moc"
