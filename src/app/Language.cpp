#include "app/Language.h"

#include "platform/Resources.h"

#include <QGuiApplication>
#include <QLibraryInfo>

using namespace Qt::StringLiterals;

namespace {

// The file of the first language that has one; none where English, in which the texts are written, is first.
std::optional<QString> firstFile(const Resources &resources, const QStringList &languages)
{
    for (const QString &name : languages) {
        const QLocale language(name);
        if (language.language() == QLocale::English)
            return std::nullopt;
        for (const QString &code : {language.name(), QLocale::languageToCode(language.language())}) {
            if (const auto file = resources.path(u"translations/belfry_"_s + code, u"qm"_s))
                return file;
        }
    }
    return std::nullopt;
}

} // namespace

Language::Language(const Resources &resources, const QStringList &asked)
{
    const auto file = firstFile(resources, asked);
    if (!file || !texts.load(*file))
        return;
    QCoreApplication::installTranslator(&texts);
    const QLocale language(texts.language());
    if (textsOfQt.load(language, u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&textsOfQt);
    QGuiApplication::setLayoutDirection(language.textDirection());
}
