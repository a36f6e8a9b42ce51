#include "platform/Log.h"
#include "ui/Alert.h"
#include "ui/FormRow.h"
#include "ui/SegmentedChoice.h"
#include "ui/Sheet.h"
#include "ui/Style.h"
#include "ui/Symbol.h"

#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

class Editor final : public Sheet
{
public:
    explicit Editor(QWidget *over)
        : Sheet(u"Add Plan"_s, over)
        , title(new QLineEdit)
        , week(new QPushButton(u"Sun"_s))
    {
        auto *row = new FormRow(u"Title:"_s);
        row->addField(title, 1);
        row->addField(week);
        addRow(row);
        save = addButton(u"plus"_s, u"Add"_s);
        connect(addButton(u"xmark"_s, u"Close"_s), &QPushButton::clicked, this, &QDialog::reject);
    }

    QLineEdit *title;
    QPushButton *week;
    QPushButton *save;
};

} // namespace

class TestSheet final : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> window;

private Q_SLOTS:
    void init()
    {
        window = std::make_unique<QWidget>();
        window->resize(960, 488);
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    void sheet_liesOverItsWindowAndHasItsSize()
    {
        auto *editor = new Editor(window.get());
        editor->open();
        QCOMPARE(editor->size(), QSize(450 + 2 * 12, 250 + 2 * 12));
        QCOMPARE(editor->windowModality(), Qt::WindowModal);
        QVERIFY(qAbs(editor->geometry().center().x() - window->geometry().center().x()) <= 2);
    }

    void enterPressesTheFirstButton_escapeCloses()
    {
        const QPointer<Editor> editor = new Editor(window.get());
        editor->open();
        QVERIFY(QTest::qWaitForWindowExposed(editor));
        QSignalSpy saves(editor->save, &QPushButton::clicked);
        QTest::keyClick(editor->title, Qt::Key_Return);
        QCOMPARE(saves.size(), 1);
        QTest::keyClick(editor->title, Qt::Key_Escape);
        QTRY_VERIFY(!editor);
    }

    void label_namesTheFieldsWithoutText()
    {
        const std::unique_ptr<Editor> editor(new Editor(window.get()));
        const auto nameOf = [](QWidget *widget) {
            return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
        };
        QCOMPARE(nameOf(editor->title), u"Title:"_s);
        QCOMPARE(nameOf(editor->week), u"Sun"_s);
    }

    void segments_areRadioButtonsForMouseAndArrows()
    {
        SegmentedChoice choice({u"Yes"_s, u"No"_s});
        choice.setAccessibleName(u"Loop:"_s);
        choice.setChoice(1);
        choice.show();
        QVERIFY(QTest::qWaitForWindowActive(&choice));
        QSignalSpy changes(&choice, &SegmentedChoice::choiceChanged);
        const auto segments = choice.findChildren<QAbstractButton *>();
        QTest::mouseClick(segments[0], Qt::LeftButton);
        QCOMPARE(choice.choice(), 0);
        segments[0]->setFocus();
        QTest::keyClick(segments[0], Qt::Key_Right);
        QCOMPARE(choice.choice(), 1);
        QCOMPARE(changes.size(), 2);
        const QAccessibleInterface *segment = QAccessible::queryAccessibleInterface(segments[1]);
        QCOMPARE(segment->role(), QAccessible::RadioButton);
        QVERIFY(segment->state().checked);
        QCOMPARE(segment->parent()->role(), QAccessible::Grouping);
        QCOMPARE(segment->parent()->text(QAccessible::Name), u"Loop:"_s);
    }

    void alert_runsTheActionOfItsAnswer_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("answer");
        QTest::newRow("a click on Delete") << u"Delete"_s << 0 << u"deleted"_s;
        QTest::newRow("a click on Cancel") << u"Cancel"_s << 0 << u"cancelled"_s;
        QTest::newRow("Escape cancels") << QString() << int(Qt::Key_Escape) << u"cancelled"_s;
        QTest::newRow("Enter alone deletes nothing") << QString() << int(Qt::Key_Return) << u"cancelled"_s;
        QTest::newRow("closing the window cancels") << QString() << 0 << u"cancelled"_s;
    }

    void alert_runsTheActionOfItsAnswer()
    {
        QFETCH(QString, button);
        QFETCH(int, key);
        QFETCH(QString, answer);
        QStringList answers;
        const QPointer<QMessageBox> box =
            Alert::show(window.get(), u"Confirm"_s, u"Delete the selected data?"_s,
                        {{u"Delete"_s, Alert::Role::destructive, [&] { answers << u"deleted"_s; }},
                         {u"Cancel"_s, Alert::Role::cancel, [&] { answers << u"cancelled"_s; }}});
        QVERIFY(QTest::qWaitForWindowExposed(box));
        QVERIFY(answers.isEmpty());
        if (key)
            QTest::keyClick(box->focusWidget(), Qt::Key(key));
        else if (button.isEmpty())
            box->close();
        for (QAbstractButton *each : box ? box->buttons() : QList<QAbstractButton *>()) {
            if (each->text() == button)
                QTest::mouseClick(each, Qt::LeftButton);
        }
        QTRY_VERIFY(!box);
        QCOMPARE(answers, QStringList(answer));
    }

    void message_isPlainTextAndHasOneButton()
    {
        const QPointer<QMessageBox> box =
            Alert::show(window.get(), u"Tip"_s, u"<i>Please</i>"_s, {{u"OK"_s, Alert::Role::standard, {}}});
        QVERIFY(QTest::qWaitForWindowExposed(box));
        QStringList texts;
        for (QLabel *label : box->findChildren<QLabel *>())
            texts << QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
        QVERIFY(texts.contains(u"Tip"_s));
        QVERIFY(texts.contains(u"<i>Please</i>"_s));
        QTest::keyClick(box->focusWidget(), Qt::Key_Escape);
        QTRY_VERIFY(!box);
    }

    void symbols_areTintedAndSharpAtAnyRatio()
    {
        const QPixmap pixmap = Symbol::icon(u"stop.fill"_s, Qt::red).pixmap(QSize(16, 16), 2.0);
        QCOMPARE(pixmap.size(), QSize(32, 32));
        QCOMPARE(pixmap.toImage().pixelColor(16, 16), QColor(Qt::red));
        QCOMPARE(pixmap.toImage().pixelColor(0, 0).alpha(), 0);
    }

    void missingSymbol_isEmptyAndLoggedOnce()
    {
        QStringList lines;
        Log::setSink([&](const QString &line) { lines << line; });
        for (const int size : {16, 24})
            QVERIFY(!Symbol::icon(u"nothing"_s, Qt::red).pixmap(QSize(size, size)).isNull());
        Log::setSink({});
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines[0].contains(u"nothing"_s));
    }

    void accents_standOutInBothSchemes_data()
    {
        QTest::addColumn<QColor>("window");
        QTest::newRow("light") << QColor(239, 239, 239);
        QTest::newRow("dark") << QColor(53, 53, 53);
    }

    void accents_standOutInBothSchemes()
    {
        QFETCH(QColor, window);
        const auto luminance = [](const QColor &color) {
            const auto linear = [](float c) {
                return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
            };
            return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
                   0.0722 * linear(color.blueF()) + 0.05;
        };
        const QPalette palette(window);
        for (const auto accent : {Style::Accent::red, Style::Accent::green, Style::Accent::blue}) {
            const double ratio = luminance(Style::accent(accent, palette)) / luminance(window);
            QVERIFY2(std::max(ratio, 1 / ratio) >= 4.5, qPrintable(QString::number(ratio)));
        }
    }
};

QTEST_MAIN(TestSheet)
#include "TestSheet.moc"
