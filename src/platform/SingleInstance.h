#pragma once

#include <QFile>
#include <QObject>
#include <QVariantMap>

/// Sees to it that the user runs one Belfry only, for two would ring every bell twice; and lets the desktop
/// bring that one to the front.
///
/// It is the object that the program shows on the session's message bus, under the name that only one program
/// can have: the interface org.freedesktop.Application. A bus may be frozen when the first program starts and
/// well again when the second one does; so a lock on a file in $XDG_RUNTIME_DIR decides too, which is given
/// back by the kernel whatever way a program ends.
class SingleInstance final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
    Q_DISABLE_COPY_MOVE(SingleInstance)

public:
    using QObject::QObject;

    /// Returns true when no other program has the name or the lock: this one has both from now on, as far as
    /// they are to be had. Else has the other one come to the front, logs what it found and returns false.
    /// When neither answers, that takes two seconds each. A session that has no bus, going by `hasBus`, keeps
    /// no program from running.
    bool claim(bool hasBus);

public Q_SLOTS:
    // Called by the desktop and other starts of Belfry; the interface names them. Belfry opens no files and
    // has no actions of its own: all of them do the same.

    /// Asks for the window. `platformData` may hold the right to take the focus ("activation-token").
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);

    /// Asks for the window, and leaves `uris` alone. `platformData` as for Activate().
    Q_SCRIPTABLE void Open(const QStringList &uris, const QVariantMap &platformData);

    /// Asks for the window, whatever the action and its parameter. `platformData` as for Activate().
    Q_SCRIPTABLE void ActivateAction(const QString &action, const QVariantList &parameter,
                                     const QVariantMap &platformData);

Q_SIGNALS:
    /// The window is wanted in front.
    void activated();

private:
    bool claimName();
    bool claimLock();

    QFile lock;
};
