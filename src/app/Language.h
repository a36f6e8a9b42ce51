#pragma once

#include <QLocale>
#include <QTranslator>

class Resources;

/// The user's language, for as long as this lives: the texts of the program and of Qt's own dialogs and
/// menus, and the direction in which the windows are laid out.
///
/// Made after the application object and before any window.
class Language final
{
    Q_DISABLE_COPY_MOVE(Language)

public:
    /// The first of the languages `asked` for, by their locales' names, that the program speaks. The texts in
    /// the source are English: where that comes first, or there is none, all texts stay as they stand.
    explicit Language(const Resources &resources, const QStringList &asked = QLocale().uiLanguages());

private:
    QTranslator texts;
    QTranslator textsOfQt;
};
