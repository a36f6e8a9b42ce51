#pragma once

#include <QString>

#include <functional>

/// The platform log and standard output, one line at a time.
///
/// Nothing here blocks or fails: a line that cannot be written at once is dropped, or the rest of one of
/// more than 4 KiB. write() and print() may be called from any thread.
namespace Log {

/// Writes a line to standard error, after a timestamp, the program's name and its process id.
void write(const QString &line);

/// Writes a line to standard output, as it is.
void print(const QString &line);

/// Redirects the messages of Qt and its plugins to write(). Fatal ones still end the program.
void captureQtMessages();

using Sink = std::function<void(const QString &line)>;

/// Redirects the lines of write() to `sink` instead of standard error; an empty sink restores that. For
/// tests.
void setSink(Sink sink);

} // namespace Log
