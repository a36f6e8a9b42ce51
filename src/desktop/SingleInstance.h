#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QVariantMap>

/// Lets only one Belfry run per user, since two would ring every bell twice, and lets the desktop raise its
/// window.
///
/// The running program owns a name on the session bus and exports this object there, with the interface
/// org.freedesktop.Application. A bus that is frozen when the first program starts may respond again when the
/// second one does. So the program also holds a lock on a file in $XDG_RUNTIME_DIR, which the kernel releases
/// however the program ends.
class SingleInstance final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
    Q_DISABLE_COPY_MOVE(SingleInstance)

public:
    using QObject::QObject;
    ~SingleInstance() override;

    /// Takes the name and the lock, as far as there is a bus and a folder for the lock. Returns false if
    /// another program has one of them; it has then been asked to raise its window if it could be reached,
    /// and the log says how that went. Blocks for two seconds at most. If the session has no bus (`hasBus`,
    /// as it was before an unresponsive one was disabled), always returns true.
    bool claim(bool hasBus);

public Q_SLOTS:
    // Called by the desktop and by second starts of Belfry. Belfry opens no files and has no actions of its
    // own, so that all three do the same.

    /// Raises the window. `platformData` may contain an "activation-token", which allows it to take the
    /// focus.
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);

    /// Raises the window, and ignores `uris`. `platformData` as for Activate().
    Q_SCRIPTABLE void Open(const QStringList &uris, const QVariantMap &platformData);

    /// Raises the window, whatever the action and its parameter. `platformData` as for Activate().
    Q_SCRIPTABLE void ActivateAction(const QString &action, const QVariantList &parameter,
                                     const QVariantMap &platformData);

Q_SIGNALS:
    /// The window should be raised.
    void activated();

private:
    bool claimName(QDeadlineTimer deadline);
    bool claimLock(QDeadlineTimer deadline);

    int lockFile = -1; // file descriptor
};
