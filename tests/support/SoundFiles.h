#pragma once

#include <QList>
#include <QProcess>
#include <QStringList>

/// Sound files, made by the ffmpeg program.
namespace SoundFiles {

/// A file at `path`, in the format of its extension, of the audio or video that the ffmpeg filter `source`
/// makes; `options` are ffmpeg's for the output.
struct Recipe
{
    QString path;
    QString source;
    QStringList options;
};

/// A source: a sine wave of `pitch` Hz at half of full volume.
inline QString tone(const QString &pitch, double seconds, int rate = 48000)
{
    return QStringLiteral("aevalsrc=exprs='0.5*sin(2*PI*%1*t)':s=%2:d=%3").arg(pitch).arg(rate).arg(seconds);
}

/// Writes the files, with one run of ffmpeg. False, with its reason on standard error, when it fails.
inline bool make(const QList<Recipe> &files)
{
    QStringList arguments = {QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"),
                             QStringLiteral("-y")};
    QStringList outputs;
    for (const Recipe &file : files) {
        const QString number = QString::number(outputs.count(QStringLiteral("-map")));
        outputs << QStringLiteral("-map") << number << file.options << file.path;
        arguments << QStringLiteral("-f") << QStringLiteral("lavfi") << QStringLiteral("-i") << file.source;
    }
    return QProcess::execute(QStringLiteral("ffmpeg"), arguments + outputs) == 0;
}

} // namespace SoundFiles
