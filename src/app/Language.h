#pragma once

#include <QLocale>
#include <QTranslator>

class Resources;

/// Translates the texts of the program, and those of Qt's dialogs and menus, for as long as it lives, and
/// sets the layout direction of the language.
///
/// To be created after the application object and before any window.
class Language final
{
    Q_DISABLE_COPY_MOVE(Language)

public:
    /// Takes the first of the `preferred` languages, given as locale names, that has a translation. The texts
    /// stay English, as in the source, if that comes before it or none has one.
    explicit Language(const Resources &resources, const QStringList &preferred = QLocale().uiLanguages());

private:
    QTranslator translator;
    QTranslator qtTranslator;
};
