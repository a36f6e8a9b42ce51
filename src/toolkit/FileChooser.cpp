#include "toolkit/FileChooser.h"

#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// What the endings of the names of files of these kinds are, in either case: some file panels tell them
// apart.
QString soundFilter()
{
    const QStringList kinds{u"MP3"_s, u"AAC"_s, u"ALAC"_s, u"IMA4"_s, u"linear"_s};
    const QStringList endings{u"mp3"_s, u"aac"_s,  u"m4a"_s,  u"m4b"_s,  u"mp4"_s, u"caf"_s, u"wav"_s,
                              u"aif"_s, u"aiff"_s, u"aifc"_s, u"flac"_s, u"ogg"_s, u"oga"_s, u"opus"_s};
    QStringList patterns;
    for (const QString &ending : endings)
        patterns << u"*."_s + ending << u"*."_s + ending.toUpper();
    return kinds.join(u", "_s) + u" ("_s + patterns.join(u' ') + u')';
}

QString folderOf(const QString &current)
{
    const QFileInfo file(current);
    const QStringList folders{file.isAbsolute() ? file.path() : QString(),
                              QStandardPaths::writableLocation(QStandardPaths::MusicLocation),
                              QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)};
    const auto found = std::find_if(folders.begin(), folders.end(), [](const QString &folder) {
        return !folder.isEmpty() && QFileInfo::exists(folder);
    });
    return found == folders.end() ? QDir::homePath() : *found;
}

} // namespace

FileChooser::FileChooser(const QString &current, QWidget *over)
    : QFileDialog(over, tr("Select a file"), folderOf(current))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setFileMode(ExistingFile);
    setOption(HideNameFilterDetails);
    setNameFilters({soundFilter(), tr("All files (*)")});
}
