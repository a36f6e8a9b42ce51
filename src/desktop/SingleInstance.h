#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QVariantMap>

/// Lets one Belfry run per user, since two would ring every bell twice, and lets the desktop raise its
/// window.
///
/// It is the object that the program exports on the session bus, under the name that only one program can
/// own: the interface org.freedesktop.Application. A bus may be frozen when the first program starts and
/// respond again when the second one does. So a lock on a file in $XDG_RUNTIME_DIR decides too; the kernel
/// releases it however a program ends.
class SingleInstance final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
    Q_DISABLE_COPY_MOVE(SingleInstance)

public:
    using QObject::QObject;
    ~SingleInstance() override;

    /// Returns true when no other program has the name or the lock: this one holds both from now on, as far
    /// as they are available. Otherwise asks the other one to raise its window, logs that and returns false.
    /// Takes two seconds at most, whoever does not respond. A session without a bus, as `hasBus` says, keeps
    /// no program from running.
    bool claim(bool hasBus);

public Q_SLOTS:
    // Called by the desktop and by other starts of Belfry; the interface fixes the names. Belfry opens no
    // files and has no actions of its own: all of them do the same.

    /// Asks for the window. `platformData` may hold the right to take the focus ("activation-token").
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);

    /// Asks for the window, and ignores `uris`. `platformData` as for Activate().
    Q_SCRIPTABLE void Open(const QStringList &uris, const QVariantMap &platformData);

    /// Asks for the window, whatever the action and its parameter. `platformData` as for Activate().
    Q_SCRIPTABLE void ActivateAction(const QString &action, const QVariantList &parameter,
                                     const QVariantMap &platformData);

Q_SIGNALS:
    /// The window should be raised.
    void activated();

private:
    bool claimName(QDeadlineTimer deadline);
    bool claimLock(QDeadlineTimer deadline);

    int lock = -1; // file descriptor
};
