#pragma once

#include <QStringList>
#include <QTemporaryFile>

#include <unistd.h>

/// The lines that `action` prints on standard output, or on another descriptor.
template<typename Action>
QStringList printedBy(Action &&action, int descriptor = STDOUT_FILENO)
{
    QTemporaryFile file;
    const int before = ::dup(descriptor);
    if (file.open())
        ::dup2(file.handle(), descriptor);
    action();
    ::dup2(before, descriptor);
    ::close(before);
    file.seek(0);
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}
