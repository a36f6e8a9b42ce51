#include "platform/Log.h"

#include "platform/Clock.h"

#include <QCoreApplication>

#include <algorithm>
#include <mutex>
#include <poll.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

Log::Sink &sink()
{
    static Log::Sink instance;
    return instance;
}

// A pipe that polls as writable takes at least 4096 bytes (PIPE_BUF) without blocking.
constexpr qsizetype chunkSize = 4096;

void writeLine(int fd, const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    // Without it two threads could both see room for one chunk, and the second write would block.
    static std::mutex mutex;
    const std::lock_guard guard(mutex);
    for (qsizetype done = 0; done < bytes.size();) {
        pollfd out{fd, POLLOUT, 0};
        if (::poll(&out, 1, 0) != 1 || out.revents != POLLOUT)
            return;
        const auto written =
            ::write(fd, bytes.constData() + done, size_t(std::min(chunkSize, bytes.size() - done)));
        if (written <= 0)
            return;
        done += written;
    }
}

} // namespace

void Log::write(const QString &line)
{
    if (sink())
        return sink()(line);
    writeLine(STDERR_FILENO,
              u"%1 %2[%3] %4"_s.arg(SystemClock().now().toString(u"yyyy-MM-dd HH:mm:ss.zzz"_s),
                                    QCoreApplication::applicationName(),
                                    QString::number(QCoreApplication::applicationPid()), line));
}

void Log::print(const QString &line)
{
    writeLine(STDOUT_FILENO, line);
}

void Log::captureQtMessages()
{
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &message) {
        write(qFormatLogMessage(type, context, message));
    });
}

void Log::setSink(Sink newSink)
{
    sink() = std::move(newSink);
}
