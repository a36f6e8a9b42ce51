#pragma once

#include <QObject>

#include <utility>

/// An object whose published members notify its observers before they change.
///
/// An observer connects to objectWillChange() and reads the new values on the next turn of the event loop:
/// when the signal is emitted, the old ones are still there.
class ObservableObject : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ObservableObject)

public:
    using QObject::QObject;

Q_SIGNALS:
    void objectWillChange();
};

/// A published member of an ObservableObject: reads like a plain `T`, and emits the signal before every
/// write.
///
///     Published<bool> isEditMode{this, false};
///     Published<QList<Plan>> plans{this};
template<typename T>
class Published final
{
    Q_DISABLE_COPY_MOVE(Published)

public:
    explicit Published(ObservableObject *owner, T initial = {}) : owner(owner), member(std::move(initial)) {}

    const T &value() const { return member; }
    operator const T &() const { return member; }
    const T *operator->() const { return &member; }

    /// Emits the signal, then sets the value, even if it is the same.
    Published &operator=(T newValue)
    {
        Q_EMIT owner->objectWillChange();
        member = std::move(newValue);
        return *this;
    }

    /// Emits the signal once, then calls `change` to modify the value in place.
    template<typename Change>
    void modify(Change &&change)
    {
        Q_EMIT owner->objectWillChange();
        std::forward<Change>(change)(member);
    }

private:
    ObservableObject *owner;
    T member;
};
