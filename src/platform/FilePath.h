#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Converts paths from text to the bytes that the file system knows.
namespace FilePath {

/// The bytes of `path`, or nothing when no file exists there.
///
/// As text, a file name that is not UTF-8 has a replacement character for each invalid byte. When no file has
/// that very name, the folders are searched for an entry that has this text.
std::optional<QByteArray> existing(const QString &path);

} // namespace FilePath
