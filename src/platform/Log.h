#pragma once

#include <QString>

#include <functional>

/// The platform log and standard output, one line at a time.
///
/// A reader that has gone away or has stopped reading costs the line, never the program: nothing here blocks,
/// and nothing here fails. May be used from any thread.
namespace Log {

/// Writes a line to standard error, behind a time stamp, the program's name and its process id.
void write(const QString &line);

/// Writes a line to standard output, just as it is, and flushes it.
void print(const QString &line);

/// Sends the messages of Qt and its plugins to write(). Fatal ones still end the program.
void captureQtMessages();

using Sink = std::function<void(const QString &line)>;

/// Sends what write() is given to `sink` instead of standard error; an empty sink restores that.
/// For tests, which look at what was logged.
void setSink(Sink sink);

} // namespace Log
