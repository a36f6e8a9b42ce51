#include "app/Language.h"

#include "platform/Resources.h"

#include <QGuiApplication>
#include <QLibraryInfo>

using namespace Qt::StringLiterals;

namespace {

// The translation for the first language that has one; none if English, the language of the source, is first.
std::optional<QString> firstTranslation(const Resources &resources, const QStringList &languages)
{
    for (const QString &name : languages) {
        const QLocale language(name);
        if (language.language() == QLocale::English)
            return std::nullopt;
        for (const QString &code : {language.name(), QLocale::languageToCode(language.language())}) {
            if (auto file = resources.path(u"translations/belfry_"_s + code, u"qm"_s))
                return file;
        }
    }
    return std::nullopt;
}

} // namespace

Language::Language(const Resources &resources, const QStringList &preferred)
{
    const auto file = firstTranslation(resources, preferred);
    if (!file || !translator.load(*file))
        return;
    QCoreApplication::installTranslator(&translator);
    const QLocale language(translator.language());
    if (qtTranslator.load(language, u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&qtTranslator);
    QGuiApplication::setLayoutDirection(language.textDirection());
}
