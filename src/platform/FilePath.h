#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Paths as texts and paths as the bytes that the file system knows.
namespace FilePath {

/// The bytes of the path under which something exists at `path`, or nothing.
///
/// A file name that is not UTF-8 has the replacement character in its text, in place of each bad byte. When
/// nothing has that very name, the folders are searched for the entry whose text it is.
std::optional<QByteArray> existing(const QString &path);

} // namespace FilePath
