#include "app/Language.h"
#include "support/MainWindow.h"
#include "support/Table.h"
#include "toolkit/ElidedLabel.h"

#include <QDir>
#include <QGuiApplication>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

// The texts in or over `root` that there is no room for.
QStringList cut(const QWidget &root)
{
    QStringList found;
    for (const QWidget *widget : root.findChildren<QWidget *>()) {
        if (!widget->isVisible() || widget->width() >= widget->sizeHint().width())
            continue;
        if (const auto *label = qobject_cast<const QLabel *>(widget))
            found << label->text();
        else if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
            found << button->text();
    }
    return found;
}

} // namespace

class TestLanguage final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QGuiApplication::setLayoutDirection(Qt::LeftToRight); }

    void language_isTheFirstAskedForThatThereIs_data()
    {
        columns<QString, QString>("asked", "texts");
        const auto row = [](const char *asked, const QString &edit, const QString &cancel) {
            QTest::newRow(asked) << QString::fromLatin1(asked) << edit + u'|' + cancel;
        };
        row("C", u"Edit"_s, u"Cancel"_s);
        row("de_AT", u"Bearbeiten"_s, u"Abbrechen"_s);
        row("zh_CN", u"编辑"_s, u"取消"_s);
        row("zh_TW", u"Edit"_s, u"Cancel"_s);
        row("he_IL", u"Edit"_s, u"Cancel"_s);
        row("ar_EG", u"تحرير"_s, u"ألغِ"_s);
        row("en_GB:de", u"Edit"_s, u"Cancel"_s);
        row("nl:fr_CA:de", u"Modifier"_s, u"Annuler"_s);
    }

    void language_isTheFirstAskedForThatThereIs()
    {
        QFETCH(QString, asked);
        const Language language(resources, asked.split(u':'));
        QTEST(ContentView::tr("Edit") + u'|' + QCoreApplication::translate("QPlatformTheme", "Cancel"),
              "texts");
        QCOMPARE(QGuiApplication::layoutDirection() == Qt::RightToLeft, asked.startsWith(u"ar"));
    }

    void texts_areShownWhole_data()
    {
        columns<QString>("name");
        for (const QString &file : QDir(u"" BELFRY_RESOURCES "/translations"_s).entryList(QDir::Files))
            QTest::newRow(qPrintable(file)) << file.section(u'.', 0, 0).section(u'_', 1);
    }

    void texts_areShownWhole()
    {
        QFETCH(QString, name);
        const Language language(resources, {name});
        MainWindow window;
        window.addPlan(u"1"_s);
        window.open();
        window.appStore.isEditMode = true;
        const auto buttons = window.toolBar()->findChildren<QToolButton *>();
        const auto isShown = [](const QToolButton *button) {
            return button->isVisible() || button->text().isEmpty();
        };
        QTRY_VERIFY(std::all_of(buttons.begin(), buttons.end(), isShown));
        QCOMPARE(cut(window.view), QStringList());
        for (const auto *label : window.card(u"1"_s)->findChildren<ElidedLabel *>())
            QVERIFY(label->font().pointSizeF() >= window.view.font().pointSizeF() * 0.8);

        window.planStore.showPlanEdit = true;
        QVERIFY(window.dialog());
        QCOMPARE(cut(*window.dialog()), QStringList());
    }

private:
    const Resources resources{QStringLiteral(BELFRY_RESOURCES)};
};

QTEST_MAIN(TestLanguage)
#include "TestLanguage.moc"
