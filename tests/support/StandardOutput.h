#pragma once

#include <QStringList>
#include <QTemporaryFile>

#include <unistd.h>

/// The lines that `action` prints on standard output.
template<typename Action>
QStringList printedBy(Action &&action)
{
    QTemporaryFile file;
    const int before = ::dup(STDOUT_FILENO);
    if (file.open())
        ::dup2(file.handle(), STDOUT_FILENO);
    action();
    ::dup2(before, STDOUT_FILENO);
    ::close(before);
    file.seek(0);
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}
