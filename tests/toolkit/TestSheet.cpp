#include "support/AnimationClock.h"
#include "support/Controls.h"
#include "support/LogCapture.h"
#include "toolkit/Alert.h"
#include "toolkit/ElidedLabel.h"
#include "toolkit/FocusRing.h"
#include "toolkit/LinearProgress.h"
#include "toolkit/SegmentedChoice.h"
#include "toolkit/Sheet.h"
#include "toolkit/Style.h"
#include "toolkit/Symbol.h"

#include <QHelpEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolBar>
#include <QToolTip>

using namespace Qt::StringLiterals;

class TestSheet final : public QObject
{
    Q_OBJECT

private:
    // A question in the window that notes how it is answered.
    QDialog *confirm()
    {
        outcomes.clear();
        return Alert::show(window.get(), u"Confirm"_s, u"<i>Really</i>?"_s,
                           {{u"Delete"_s, Alert::Role::destructive, [this] { outcomes << u"deleted"_s; }},
                            {u"Cancel"_s, Alert::Role::cancel, [this] { outcomes << u"cancelled"_s; }}});
    }

    std::unique_ptr<QMainWindow> window;
    QPushButton *behind = nullptr;
    QStringList outcomes;

private Q_SLOTS:
    void init()
    {
        window = std::make_unique<QMainWindow>();
        window->addToolBar(u"Tools"_s)->addAction(u"Tool"_s);
        window->setCentralWidget(behind = new QPushButton(u"&Behind"_s));
        window->resize(960, 700);
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    void segments_areRadioButtonsForMouseAndArrows()
    {
        SegmentedChoice choice({u"Yes"_s, u"No"_s});
        choice.setChoice(1);
        choice.show();
        QVERIFY(QTest::qWaitForWindowActive(&choice));
        const auto segments = choice.findChildren<QAbstractButton *>();
        QTest::keyClick(&choice, Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), segments[1]);
        QTest::mouseClick(segments[0], Qt::LeftButton);
        QCOMPARE(choice.choice(), 0);
        QTest::keyClick(segments[0], Qt::Key_Right);
        QCOMPARE(choice.choice(), 1);
        const QAccessibleInterface *segment = QAccessible::queryAccessibleInterface(segments[1]);
        QVERIFY(segment->role() == QAccessible::RadioButton && segment->state().checked);
        QCOMPARE(segment->parent()->role(), QAccessible::Grouping);
    }

    void alert_cancelsUnlessToldToDelete()
    {
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
            const QPointer alert = confirm();
            const QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(alert);
            QVERIFY(accessible->role() == QAccessible::AlertMessage && accessible->state().modal);
            QCOMPARE(accessible->text(QAccessible::Name) + accessible->text(QAccessible::Description),
                     u"Confirm<i>Really</i>?"_s);
            window->setPalette(QColor(key == Qt::Key_Escape ? Qt::black : Qt::white));
            const QColor red = control(alert, u"Delete"_s)->palette().color(QPalette::ButtonText);
            QCOMPARE(red, Style::accent(Style::Accent::red, window->palette()));
            QVERIFY(qAbs(red.lightness() - window->palette().window().color().lightness()) > 120);
            QTest::keyClick(alert->focusWidget(), key);
            alert->accept(); // too late
            QTRY_VERIFY(!alert);
            QCOMPARE(outcomes, QStringList(u"cancelled"_s));
        }
    }

    void sheet_slidesOutFromUnderTheToolBar()
    {
        class Form final : public Sheet
        {
        public:
            using Sheet::addRow;
            using Sheet::Sheet;
        };
        AnimationClock clock;
        const QPointer form = new Form(u"Form"_s, window.get());
        auto *field = new QLineEdit;
        form->addRow(field);
        form->open();
        QCOMPARE(form->geometry().bottom(), behind->y());
        clock.advance(250);
        QCOMPARE(form->geometry(), QRect(243, behind->y(), 474, 274));
        window->resize(1000, 700);
        QTRY_COMPARE(form->x(), 263);
        field->setMinimumWidth(2000);
        QTRY_COMPARE(form->width(), 800);
        QFont large = form->font();
        large.setPointSize(24);
        form->setFont(large);
        QTRY_COMPARE(form->width(), window->width());

        const QSignalSpy results(form, &QDialog::finished);
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(results.value(0).value(0), QVariant(QDialog::Rejected));
        const auto *picture =
            form->parentWidget()->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
        clock.advance(249);
        QVERIFY(picture->isVisible() && picture->y() < 0);
        QTRY_VERIFY(!form && behind->isEnabled());
    }

    void panel_hasAllInputUntilItHasGone()
    {
        behind->setFocus();
        const QSignalSpy presses(behind, &QPushButton::clicked);
        const QPointer alert = confirm();
        for (const Qt::Key key :
             {Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Backtab, Qt::Key_Backtab}) {
            QTest::keyClick(QApplication::focusWidget(), key);
            QVERIFY(alert->isAncestorOf(QApplication::focusWidget()));
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_B, Qt::AltModifier);
        const QPointer second = Alert::show(alert, u"Tip"_s, QString(), {{u"OK"_s}});
        QVERIFY(!click(alert, u"Delete"_s));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QTRY_VERIFY(alert->isAncestorOf(QApplication::focusWidget()));
        QVERIFY(!second && outcomes.isEmpty() && !behind->isEnabled());

        const QWidget *button = control(alert, u"Delete"_s);
        const QPoint place = button->mapTo(window.get(), button->rect().center());
        for (int i = 0; i < 3; ++i)
            QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, place);
        QCOMPARE(outcomes, QStringList(u"deleted"_s));
        QTRY_VERIFY(behind->hasFocus());
        QCOMPARE(presses.size(), 0);
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, place);
        QCOMPARE(presses.size(), 1);
    }

    void focusFrame_isForTheKeyboard()
    {
        new FocusRing(window.get());
        const auto isFramed = [this] {
            const QColor frame = Style::accent(Style::Accent::blue, behind->palette());
            return behind->grab().toImage().pixelColor(behind->width() / 2, 1) == frame;
        };
        QTest::mouseClick(behind, Qt::LeftButton);
        QTest::keyClick(behind, Qt::Key_Shift);
        QVERIFY(behind->hasFocus() && !isFramed());
        QTest::keyClick(behind, Qt::Key_Space);
        QVERIFY(isFramed());
        QTest::mouseClick(behind, Qt::LeftButton);
        QVERIFY(!isFramed());
    }

    void progress_isEmptyWhereTheTotalIsUnknown()
    {
        LinearProgress progress;
        for (const double total : {2.0, 0.0}) {
            progress.setProgress(1, total);
            QCOMPARE(progress.value(), total > 0 ? progress.maximum() / 2 : 0);
        }
    }

    void elidedText_isInTheToolTip()
    {
        ElidedLabel label;
        label.setText(u"this & that"_s);
        for (const int width : {500, 10}) {
            label.resize(width, 20);
            QHelpEvent help(QEvent::ToolTip, {}, {});
            QCoreApplication::sendEvent(&label, &help);
            QCOMPARE(QToolTip::text().contains(u"this &amp; that"_s), label.isElided());
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
