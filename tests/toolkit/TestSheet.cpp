#include "support/Controls.h"
#include "support/LogCapture.h"
#include "toolkit/Alert.h"
#include "toolkit/SegmentedChoice.h"
#include "toolkit/Symbol.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

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

    void segments_areRadioButtonsForMouseAndArrows()
    {
        SegmentedChoice choice({u"Yes"_s, u"No"_s});
        choice.setAccessibleName(u"Loop:"_s);
        choice.setChoice(1);
        choice.show();
        QVERIFY(QTest::qWaitForWindowActive(&choice));
        QSignalSpy changes(&choice, &SegmentedChoice::choiceChanged);
        const auto segments = choice.findChildren<QAbstractButton *>();
        QTest::keyClick(&choice, Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), segments[1]);
        QTest::mouseClick(segments[0], Qt::LeftButton);
        QCOMPARE(choice.choice(), 0);
        QTest::keyClick(segments[0], Qt::Key_Right);
        QCOMPARE(choice.choice(), 1);
        QCOMPARE(changes.size(), 2);
        const QAccessibleInterface *segment = QAccessible::queryAccessibleInterface(segments[1]);
        QCOMPARE(segment->role(), QAccessible::RadioButton);
        QVERIFY(segment->state().checked);
        QCOMPARE(segment->parent()->role(), QAccessible::Grouping);
        QCOMPARE(segment->parent()->text(QAccessible::Name), u"Loop:"_s);
    }

    void alert_deletesNothingUnlessToldTo()
    {
        const std::pair<std::function<void(QMessageBox &)>, QString> answers[]{
            {[](QMessageBox &box) { click(&box, u"Delete"_s); }, u"deleted"_s},
            {[](QMessageBox &box) { QTest::keyClick(box.focusWidget(), Qt::Key_Escape); }, u"cancelled"_s},
            {[](QMessageBox &box) { QTest::keyClick(box.focusWidget(), Qt::Key_Return); }, u"cancelled"_s},
            {[](QMessageBox &box) { box.close(); }, u"cancelled"_s},
        };
        for (const auto &[answer, outcome] : answers) {
            QStringList outcomes;
            const QPointer<QMessageBox> box =
                Alert::show(window.get(), u"Confirm"_s, u"<i>Really</i>?"_s,
                            {{u"Delete"_s, Alert::Role::destructive, [&] { outcomes << u"deleted"_s; }},
                             {u"Cancel"_s, Alert::Role::cancel, [&] { outcomes << u"cancelled"_s; }}});
            QVERIFY(QTest::qWaitForWindowExposed(box));
            QStringList texts;
            for (QLabel *label : box->findChildren<QLabel *>())
                texts << QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
            QVERIFY(texts.contains(u"Confirm"_s) && texts.contains(u"<i>Really</i>?"_s));
            answer(*box);
            QTRY_VERIFY(!box);
            QCOMPARE(outcomes, QStringList(outcome));
        }
    }

    void symbols_areTintedAndSharpAtAnyRatio_orEmptyAndLoggedOnce()
    {
        const QPixmap pixmap = Symbol::icon(u"stop.fill"_s, Qt::red).pixmap(QSize(16, 16), 2.0);
        QCOMPARE(pixmap.size(), QSize(32, 32));
        QCOMPARE(pixmap.toImage().pixelColor(16, 16), QColor(Qt::red));
        QCOMPARE(pixmap.toImage().pixelColor(0, 0).alpha(), 0);

        const LogCapture log;
        for (const int size : {16, 24})
            QVERIFY(!Symbol::icon(u"nothing"_s, Qt::red).pixmap(QSize(size, size)).isNull());
        QCOMPARE(log.lines().size(), 1);
    }
};

QTEST_MAIN(TestSheet)
#include "TestSheet.moc"
