#include "app/ColorScheme.h"

#include "toolkit/Style.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QStyle>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1String portal("org.freedesktop.portal.Desktop");
constexpr QLatin1String path("/org/freedesktop/portal/desktop");
constexpr QLatin1String interface("org.freedesktop.portal.Settings");
constexpr QLatin1String appearance("org.freedesktop.appearance");
constexpr QLatin1String colorScheme("color-scheme");
constexpr uint preferDark = 1;

QPalette darkPalette()
{
    QPalette palette(QColor(54, 54, 58), QColor(36, 36, 40)); // buttons, windows
    palette.setColor(QPalette::Base, QColor(28, 28, 31));
    palette.setColor(QPalette::AlternateBase, QColor(44, 44, 48));
    palette.setColor(QPalette::Highlight, QColor(42, 112, 190));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, Style::accent(Style::Accent::blue, palette));
    palette.setColor(QPalette::PlaceholderText, QColor(160, 160, 165));
    palette.setColor(QPalette::ToolTipBase, QColor(60, 60, 65));
    palette.setColor(QPalette::ToolTipText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(130, 130, 135));
    return palette;
}

// False where the platform theme has set a palette.
bool hasStandardPalette()
{
    return QApplication::palette() == QApplication::style()->standardPalette();
}

// The window frames that Qt draws on Wayland keep their first colours, so they are created again.
void recreateFrames()
{
    if (!QGuiApplication::platformName().startsWith(u"wayland"_s))
        return;
    for (QWindow *window : QGuiApplication::topLevelWindows()) {
        const Qt::WindowFlags flags = window->flags();
        if (!window->handle() || window->type() == Qt::Popup || window->type() == Qt::ToolTip)
            continue;
        window->setFlags(flags | Qt::FramelessWindowHint);
        window->setFlags(flags);
    }
}

} // namespace

ColorScheme::ColorScheme(QObject *parent) : QObject(parent)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    // From any sender: to match that of the portal, Qt would look up the owner of its name and block.
    bus.connect(QString(), path, interface, u"SettingChanged"_s, {appearance, colorScheme}, QString(), this,
                SLOT(onSettingChanged(QDBusMessage)));
    auto *watcher = new QDBusServiceWatcher(portal, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &ColorScheme::readSetting);
    readSetting();
}

void ColorScheme::onSettingChanged(const QDBusMessage &message)
{
    constexpr int value = 2; // after the namespace and the key
    apply(qvariant_cast<QDBusVariant>(message.arguments().value(value)).variant());
}

void ColorScheme::readSetting()
{
    // Its replacement, ReadOne, is missing in the portal of Debian 12.
    auto read = QDBusMessage::createMethodCall(portal, path, interface, u"Read"_s);
    read << QString(appearance) << QString(colorScheme);
    auto *watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(read), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (!reply.isError()) // a variant in a variant
            apply(qvariant_cast<QDBusVariant>(reply.value().variant()).variant());
        watcher->deleteLater();
    });
}

void ColorScheme::apply(const QVariant &setting)
{
    const bool isDark = setting.toUInt() == preferDark;
    if (isDark == hasDarkPalette)
        return;
    if (isDark && (Style::isDark(QApplication::palette()) || !hasStandardPalette()))
        return;
    hasDarkPalette = isDark;
    QApplication::setPalette(isDark ? darkPalette() : QPalette());
    recreateFrames();
}
