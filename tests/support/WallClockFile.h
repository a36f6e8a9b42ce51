#pragma once

#include <QDateTime>
#include <QFile>
#include <QProcessEnvironment>
#include <QTemporaryDir>

/// A wall clock for a whole program, by libfaketime: it can be set while the program runs. Timers and sound
/// keep to the real time.
class WallClockFile final
{
    Q_DISABLE_COPY_MOVE(WallClockFile)

public:
    WallClockFile() = default;

    /// What a program needs in its environment to see this clock.
    void addTo(QProcessEnvironment &environment) const
    {
        environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(BELFRY_FAKETIME));
        // A sanitizer would insist on being the first library of a program.
        environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("verify_asan_link_order=0"));
        environment.insert(QStringLiteral("FAKETIME_TIMESTAMP_FILE"), path());
        environment.insert(QStringLiteral("FAKETIME_NO_CACHE"), QStringLiteral("1"));
        // Without these two the sound breaks.
        environment.insert(QStringLiteral("FAKETIME_DONT_FAKE_MONOTONIC"), QStringLiteral("1"));
        environment.insert(QStringLiteral("FAKETIME_FORCE_MONOTONIC_FIX"), QStringLiteral("0"));
        environment.insert(QStringLiteral("NO_FAKE_STAT"), QStringLiteral("1"));
        environment.insert(QStringLiteral("LC_NUMERIC"), QStringLiteral("C"));
    }

    /// Lets the clock read `moment` from now on.
    void set(const QDateTime &moment)
    {
        offset = moment.toMSecsSinceEpoch() - QDateTime::currentMSecsSinceEpoch();
        QFile next(path() + QStringLiteral(".next"));
        if (!next.open(QIODevice::WriteOnly))
            qFatal("cannot set the clock");
        next.write(qPrintable(QString::asprintf("%+.3f\n", double(offset) / 1000)));
        next.close();
        // In one step, for the program may read at any moment.
        ::rename(QFile::encodeName(next.fileName()).constData(), QFile::encodeName(path()).constData());
    }

    /// What the clock reads now.
    QDateTime now() const { return at(QDateTime::currentMSecsSinceEpoch()); }

    /// What the clock, as it was last set, reads at a real moment in ms since 1970.
    QDateTime at(qint64 real) const { return QDateTime::fromMSecsSinceEpoch(real + offset); }

private:
    QString path() const { return folder.filePath(QStringLiteral("clock")); }

    QTemporaryDir folder;
    qint64 offset = 0;
};
