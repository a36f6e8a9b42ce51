#pragma once

#include <QObject>

#include <utility>

/// An object whose published members tell its observers before each of their changes.
///
/// An observer connects to objectWillChange() and looks at the new values on the next turn of the
/// event loop: at the signal itself they are still the old ones.
class ObservableObject : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ObservableObject)

public:
    using QObject::QObject;

Q_SIGNALS:
    void objectWillChange();
};

/// A published member of an ObservableObject: reads like a plain `T`, and announces every write.
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

    /// Announces the change, then sets the value, also when it is the same.
    Published &operator=(T newValue)
    {
        Q_EMIT owner->objectWillChange();
        member = std::move(newValue);
        return *this;
    }

    /// Announces one change, then lets `change` make it in place.
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
