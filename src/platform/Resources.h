#pragma once

#include <QString>

#include <optional>

/// The folder of files that the program ships with: the template database, the translations, the sample
/// sound.
class Resources final
{
public:
    explicit Resources(const QString &folder);

    /// Those of the running program: in `../share/belfry` of an installed one, else in `resources` in the
    /// build tree.
    static Resources ofApplication();

    /// The absolute path of the resource `name` with the file name extension `type` (empty: `name` is the
    /// whole file name), or nothing when there is no such file.
    std::optional<QString> path(const QString &name, const QString &type = {}) const;

private:
    QString folder;
};
