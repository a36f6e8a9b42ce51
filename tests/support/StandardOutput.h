#pragma once

#include <QStringList>
#include <QTemporaryFile>

#include <unistd.h>

/// Collects what is written to standard output for as long as it lives.
class StandardOutput final
{
    Q_DISABLE_COPY_MOVE(StandardOutput)

public:
    StandardOutput() : before(::dup(STDOUT_FILENO))
    {
        if (file.open())
            ::dup2(file.handle(), STDOUT_FILENO);
    }
    ~StandardOutput()
    {
        ::dup2(before, STDOUT_FILENO);
        ::close(before);
    }

    /// The lines since the last call.
    QStringList takeLines()
    {
        file.seek(taken);
        const QString text = QString::fromUtf8(file.readAll());
        taken = file.pos();
        ::lseek(file.handle(), 0, SEEK_END);
        return text.split(u'\n', Qt::SkipEmptyParts);
    }

private:
    int before;
    QTemporaryFile file;
    qint64 taken = 0;
};
