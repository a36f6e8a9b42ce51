#pragma once

#include <QDBusUnixFileDescriptor>
#include <QObject>

/// Inhibits idle suspend for as long as it lives. The user can still suspend the computer.
///
/// It asks systemd-logind, which Plasma follows, the power manager of Xfce, and the session manager of GNOME
/// and its relatives. All calls are asynchronous, and are repeated when a service registers again. If logind
/// refuses or is missing, that is logged once.
///
/// For its inhibitors GNOME's session manager holds a logind lock on every suspend, and since systemd 257
/// "Suspend" in the menu fails under such a lock. So where GNOME's compositor reports the lack of input,
/// Belfry inhibits there only then.
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
    void watchForIdle();
    void inhibitViaSessionManager();
    void uninhibitSessionManager();

    QDBusUnixFileDescriptor logindLock;
    bool hasLoggedLogindError = false;

    uint idleWatch = 0;       // fires whenever there has been no input for a while
    uint userActiveWatch = 0; // fires once, at the next input
    bool isInhibiting = false;
    uint cookie = 0; // of the session manager's inhibitor; 0 until its reply
};
