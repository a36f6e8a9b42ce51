#pragma once

#include <QObject>
#include <QVariantMap>

/// Sees to it that the user runs one Belfry only, for two would ring every bell twice; and lets the desktop
/// bring that one to the front.
///
/// It is the object that the program shows on the session's message bus, under the name that only one program
/// can have: the interface org.freedesktop.Application. A bus that is not there, or that does not answer
/// within two seconds, is as good as no other program.
class SingleInstance final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
    Q_DISABLE_COPY_MOVE(SingleInstance)

public:
    using QObject::QObject;

    /// Returns true when no other program has the name: this one has it from now on, as far as there is a
    /// bus. Else has the other one come to the front and returns false.
    bool claim();

public Q_SLOTS:
    // What the desktop and other starts of Belfry call, named by the interface. `platformData` may hold the
    // right to take the focus. Belfry opens no files and has no actions of its own: all of them do the same.
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);
    Q_SCRIPTABLE void Open(const QStringList &uris, const QVariantMap &platformData);
    Q_SCRIPTABLE void ActivateAction(const QString &action, const QVariantList &parameter,
                                     const QVariantMap &platformData);

Q_SIGNALS:
    /// The window is wanted in front.
    void activated();
};
