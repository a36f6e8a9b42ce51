#include "platform/FilePath.h"

#include <QFile>

#include <dirent.h>
#include <memory>
#include <sys/stat.h>

namespace {

bool exists(const QByteArray &path)
{
    struct stat unused;
    return ::stat(path.constData(), &unused) == 0;
}

std::optional<QByteArray> entryWithText(const QByteArray &folder, const QString &name)
{
    const std::unique_ptr<DIR, int (*)(DIR *)> entries(::opendir(folder.constData()), ::closedir);
    if (!entries)
        return std::nullopt;
    while (const dirent *entry = ::readdir(entries.get())) {
        if (QFile::decodeName(entry->d_name) == name)
            return QByteArray(entry->d_name);
    }
    return std::nullopt;
}

} // namespace

std::optional<QByteArray> FilePath::existing(const QString &path)
{
    const QByteArray bytes = QFile::encodeName(path);
    if (bytes.isEmpty() || bytes.contains('\0'))
        return std::nullopt;
    if (exists(bytes))
        return bytes;
    if (!path.startsWith(u'/') || !path.contains(QChar::ReplacementCharacter))
        return std::nullopt;
    QByteArray found;
    const QStringList names = path.split(u'/', Qt::SkipEmptyParts);
    for (const QString &name : names) {
        const QByteArray plain = found + '/' + QFile::encodeName(name);
        if (exists(plain)) {
            found = plain;
        } else if (const auto entry = entryWithText(found + '/', name)) {
            found += '/' + *entry;
        } else {
            return std::nullopt;
        }
    }
    return found;
}
