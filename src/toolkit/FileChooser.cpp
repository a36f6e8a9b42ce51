#include "toolkit/FileChooser.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// Extensions in lower and upper case, as the filters of some file dialogs are case-sensitive.
QString soundFilter()
{
    const QStringList kinds{u"MP3"_s, u"AAC"_s, u"ALAC"_s, u"IMA4"_s, u"linear"_s};
    const QStringList extensions{u"mp3"_s, u"aac"_s,  u"m4a"_s,  u"m4b"_s,  u"mp4"_s, u"caf"_s, u"wav"_s,
                                 u"aif"_s, u"aiff"_s, u"aifc"_s, u"flac"_s, u"ogg"_s, u"oga"_s, u"opus"_s};
    QStringList patterns;
    for (const QString &extension : extensions)
        patterns << u"*."_s + extension << u"*."_s + extension.toUpper();
    return kinds.join(u", "_s) + u" ("_s + patterns.join(u' ') + u')';
}

QString folderOf(const QString &current)
{
    const QFileInfo file(current);
    const QStringList folders{file.isAbsolute() ? file.path() : QString(),
                              QStandardPaths::writableLocation(QStandardPaths::MusicLocation),
                              QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)};
    const auto found = std::find_if(folders.begin(), folders.end(), [](const QString &folder) {
        return !folder.isEmpty() && QFileInfo::exists(folder);
    });
    return found == folders.end() ? QDir::homePath() : *found;
}

constexpr int timeoutMs = 2000;

// Asks the portal for the version of its file dialog: any answer means that it is there.
QDBusMessage portalVersion()
{
    auto version = QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s,
                                                  u"/org/freedesktop/portal/desktop"_s,
                                                  u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    version << u"org.freedesktop.portal.FileChooser"_s << u"version"_s;
    return version;
}

} // namespace

void FileChooser::preferPortal()
{
    constexpr char variable[] = "QT_QPA_PLATFORMTHEME";
    if (!qEnvironmentVariableIsEmpty(variable))
        return;
    // Qt itself asks the portal when it starts, and would wait 25 seconds for one that hangs.
    const QString connection = u"belfry-portal"_s;
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connection);
    if (bus.call(portalVersion(), QDBus::Block, timeoutMs).type() == QDBusMessage::ReplyMessage)
        qputenv(variable, "xdgdesktopportal"); // which passes on everything else of the desktop's own theme
    QDBusConnection::disconnectFromBus(connection);
}

FileChooser::FileChooser(const QString &current, QWidget *parent)
    : QFileDialog(parent, tr("Select a file"), folderOf(current))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setFileMode(ExistingFile);
    setOption(HideNameFilterDetails);
    setNameFilters({soundFilter(), tr("All files (*)")});
}

void FileChooser::open()
{
    const QDBusPendingCall call = QDBusConnection::sessionBus().asyncCall(portalVersion(), timeoutMs);
    const auto show = [this](const QDBusPendingCall &reply) {
        setOption(DontUseNativeDialog, reply.isError());
        QFileDialog::open();
    };
    if (call.isFinished()) // at once where there is no bus
        return show(call);
    auto *watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, show] { show(*watcher); });
}
