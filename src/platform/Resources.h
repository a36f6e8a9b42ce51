#pragma once

#include <QString>

#include <optional>

/// The folder of files that the program ships with: the template database, the translations, the sample
/// sound.
class Resources final
{
public:
    explicit Resources(const QString &folder);

    /// Those of the running program: `../share/belfry` beside an installed one, else `resources`
    /// beside the one in a build tree.
    static Resources ofApplication();

    /// The full path of the resource `name` of type `type` (its file name ending; empty: `name` is the
    /// whole file name), or nothing when there is no such file.
    std::optional<QString> path(const QString &name, const QString &type = {}) const;

private:
    QString folder;
};
