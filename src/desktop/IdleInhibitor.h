#pragma once

#include <QDBusUnixFileDescriptor>
#include <QObject>

/// Keeps the machine from suspending by itself while nobody uses it, for as long as it lives. The user can
/// still suspend it.
///
/// It asks systemd-logind, which Plasma follows, the power manager of Xfce, and the session manager of GNOME
/// and its relatives. All calls are asynchronous, and are repeated when a service comes back. When logind
/// refuses or is not there, the log says so once.
///
/// GNOME's session manager holds a logind lock on every suspend for its inhibitors, and since systemd 257
/// "Suspend" in the menu fails under such a lock. So where GNOME's compositor tells when there is no input,
/// Belfry inhibits only then.
class IdleInhibitor final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(IdleInhibitor)

public:
    explicit IdleInhibitor(QObject *parent = nullptr);

private Q_SLOTS:
    void onWatchFired(uint watch);

private:
    void inhibitViaLogind();
    void inhibitViaPowerManager();
    void watchInput();
    void inhibitViaSessionManager();
    void releaseSessionManager();

    QDBusUnixFileDescriptor logindLock;
    bool hasLogged = false;

    uint inputlessWatch = 0; // fires whenever there has been no input for a while
    uint inputWatch = 0;     // fires once, at the next input
    bool isInhibiting = false;
    uint cookie = 0; // of the session manager's inhibitor, as soon as it is known
};
