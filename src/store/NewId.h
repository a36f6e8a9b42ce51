#pragma once

#include <QString>
#include <QUuid>

/// A new id for a record: a random UUID of 36 characters in upper case.
inline QString newId()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}
