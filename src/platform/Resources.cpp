#include "platform/Resources.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

Resources::Resources(const QString &folder) : folder(QDir(folder).absolutePath()) {}

Resources Resources::ofApplication()
{
    const QDir program(QCoreApplication::applicationDirPath());
    const QString installed = program.filePath(QStringLiteral(BELFRY_DATA_FOLDER));
    return Resources(QFileInfo(installed).isDir() ? installed : program.filePath(u"resources"_s));
}

std::optional<QString> Resources::path(const QString &name, const QString &type) const
{
    const QString file = folder + u'/' + (type.isEmpty() ? name : name + u'.' + type);
    return QFileInfo(file).isFile() ? std::optional(file) : std::nullopt;
}
