#pragma once

#include <QDBusUnixFileDescriptor>
#include <QObject>

class QDBusPendingCall;

/// Keeps the machine from falling asleep through a bell while nobody uses it, for as long as it lives. To
/// send it to sleep by hand stays possible.
///
/// It asks the system's login manager, whose lock lasts as long as a descriptor is open, and the session
/// manager (GNOME) or power manager (Xfce) of those desktops that do not look at that lock. Nothing waits for
/// the answers.
/// When the login manager refuses or is not there, the log says so once.
class IdleInhibitor final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(IdleInhibitor)

public:
    explicit IdleInhibitor(QObject *parent = nullptr);

private:
    void askLoginManager();
    void take(const QDBusPendingCall &answer);
    void askDesktop();

    QDBusUnixFileDescriptor lock;
    bool hasLogged = false;
};
