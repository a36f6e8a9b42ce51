#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTest>

/// Sound files, made by the ffmpeg program.
namespace SoundFiles {

/// A sine wave at half of full volume, for make(): `pitch` in Hz is a formula in the time t.
inline QString tone(const QString &pitch, double seconds, int rate = 48000)
{
    return QStringLiteral("aevalsrc=exprs='0.5*sin(2*PI*(%1)*t)':s=%2:d=%3")
        .arg(pitch)
        .arg(rate)
        .arg(seconds);
}

/// Writes `sound` to a file at `path`, in the format of its ending and with ffmpeg's `options`. False, with a
/// line in the test's output, when that does not work.
inline bool make(const QString &path, const QString &sound, const QStringList &options = {})
{
    QProcess ffmpeg;
    ffmpeg.setProcessChannelMode(QProcess::ForwardedChannels);
    ffmpeg.setStandardInputFile(QProcess::nullDevice());
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 QStringList{QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y"),
                             QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"), sound} +
                     options + QStringList{path});
    const bool made =
        ffmpeg.waitForFinished() && ffmpeg.exitStatus() == QProcess::NormalExit && ffmpeg.exitCode() == 0;
    if (!made)
        qWarning("ffmpeg did not make %s", qUtf8Printable(path));
    return made;
}

} // namespace SoundFiles
