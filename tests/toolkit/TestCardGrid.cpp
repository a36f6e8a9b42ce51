#include "support/AnimationClock.h"
#include "toolkit/Card.h"
#include "toolkit/CardGrid.h"
#include "toolkit/ElidedLabel.h"
#include "toolkit/IconButton.h"
#include "toolkit/TextRow.h"

#include <QAccessible>
#include <QGraphicsEffect>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

class Item final : public Card
{
public:
    Item() : Card(100, 140)
    {
        play->setSymbol(u"play"_s, u"Play"_s);
        select->setSymbols(u"square"_s, u"checkmark.square"_s, u"Select"_s);
        addText(Qt::white);
        addText(Qt::white);
        addLine(days);
    }

    IconButton *play = addButton();
    IconButton *select = addButton();
    TextRow *days = new TextRow({u"Mon"_s});
};

} // namespace

class TestCardGrid final : public QObject
{
    Q_OBJECT

private:
    void open(int count, bool isAnimated = false)
    {
        ids.clear();
        withControls = count;
        for (int index = 0; index < count; ++index)
            ids << QString::number(index);
        grid = new CardGrid({[this] { return int(ids.size()); }, [this](int index) { return ids.at(index); },
                             [] { return new Item; },
                             [this](Card *card, int index) {
                                 card->setTitle(ids.at(index));
                                 static_cast<Item *>(card)->select->setChecked(ids.at(index) == checked);
                             },
                             [](int) { return 0; }, [this](int index) { return index < withControls; }},
                            10);
        grid->setAnimated(isAnimated);
        window = std::make_unique<QWidget>();
        auto *column = new QVBoxLayout(window.get());
        column->setContentsMargins(0, 0, 0, 0);
        column->addWidget(grid);
        column->addWidget(after = new QLineEdit);
        window->resize(840, 480);
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    Item *item(int id) const { return static_cast<Item *>(grid->card(QString::number(id))); }
    QScrollBar *bar() const { return grid->verticalScrollBar(); }
    qsizetype created() const { return grid->findChildren<Card *>().size(); }

    // How much darker than an empty page the screen is at a point of the view.
    int darkness(const QPoint &point) const
    {
        QCoreApplication::processEvents();
        const QImage screen = window->screen()->grabWindow(window->winId()).toImage();
        return grid->palette().color(QPalette::Window).lightness() -
               screen.pixelColor(grid->viewport()->mapTo(window.get(), point)).lightness();
    }

    QStringList ids;
    QString checked;      // the id of the checked record
    int withControls = 0; // so many of the first records have some
    std::unique_ptr<QWidget> window;
    CardGrid *grid = nullptr;
    QLineEdit *after = nullptr;

private Q_SLOTS:
    void cleanup() { window.reset(); }

    void columns_fillTheWidth()
    {
        // The rectangles of cards, of which the second is the highest.
        const auto rects = [](int count, int width, Qt::LayoutDirection direction = Qt::LeftToRight) {
            const GridGeometry geometry(count, width, direction, [](int index) { return 100 + index % 2; });
            QList<QRect> list;
            for (int index = 0; index < count; ++index)
                list << geometry.rect(index);
            return list;
        };
        QCOMPARE(rects(2, 519), (QList<QRect>{{12, 12, 495, 100}, {12, 124, 495, 101}}));
        QCOMPARE(rects(3, 776), (QList<QRect>{{12, 12, 240, 101}, {268, 12, 240, 101}, {524, 12, 240, 101}}));
        QCOMPARE(rects(2, 520, Qt::RightToLeft), (QList<QRect>{{268, 12, 240, 101}, {12, 12, 240, 101}}));
    }

    void longList_makesCardsForTheViewOnlyInListOrder()
    {
        open(10000);
        for (int position = 0; position <= bar()->maximum(); position += 9973)
            bar()->setValue(position);
        QTest::keyClick(grid, Qt::Key_Home);
        QVERIFY(item(0) && item(2)->geometry().right() == grid->viewport()->width() - 13);
        QTest::keyClick(grid, Qt::Key_End);
        QVERIFY(item(9999) && item(9999)->geometry().bottom() == grid->viewport()->height() - 13);
        ids.move(9990, 9998);
        grid->refresh();
        QStringList shown;
        for (const Card *card : grid->findChildren<Card *>()) {
            if (card->isVisible())
                shown << card->title();
        }
        QVERIFY(shown.size() >= 9 && created() < 60);
        for (qsizetype i = 1; i <= shown.size(); ++i)
            QCOMPARE(shown[shown.size() - i], ids[ids.size() - i]);
    }

    void resize_keepsTheCardAtTheTopOfTheView()
    {
        AnimationClock clock;
        open(300);
        bar()->setValue(item(3)->y() + 20);
        grid->setAnimated(true);
        ids.removeLast();
        grid->refresh();
        window->resize(500, 480); // ends the transition, which has just begun
        QTRY_VERIFY(item(3)->width() > 400);
        QCOMPARE(item(3)->y(), -20);
    }

    void listShrinksBeforeTheRefresh_scrollingIsSafe()
    {
        open(300);
        ids.resize(2);
        bar()->setValue(bar()->maximum());
        QVERIFY(item(1));
        QCOMPARE(bar()->maximum(), 0);
        ids.clear();
        window->resize(500, 400);
        QTRY_VERIFY(!item(0));
    }

    void height_isThatOfTheLinesInTheirFont()
    {
        open(6);
        const int usualHeight = item(0)->height();
        const QFont usual = grid->font();
        QFont large = usual;
        large.setPointSize(24);
        window->setFont(large);
        const TextRow *last = item(0)->days;
        QTRY_COMPARE(last->height(), QFontMetrics(large).height());
        QCOMPARE(last->findChild<ElidedLabel *>()->font().pointSize(), 24);
        QTRY_VERIFY(item(0)->height() >= last->geometry().bottom() + 12);
        window->setFont(usual);
        QTRY_COMPARE(item(5)->height(), usualHeight);
    }

    void firstAppearance_isTilted()
    {
        AnimationClock clock;
        open(300, true);
        const auto createdAtFirst = created();
        const QPoint inFirst = item(0)->pos() + QPoint(60, 4);
        QVERIFY(darkness(inFirst) < 200);
        clock.advance(799);
        QVERIFY(grid->viewport()->graphicsEffect());
        QVERIFY(darkness(inFirst) > 200);
        clock.advance(1);
        QVERIFY(!grid->viewport()->graphicsEffect());
        QVERIFY(created() > createdAtFirst); // those that are only near the view can wait until then
        grid->hide();
        grid->show();
        QVERIFY(!grid->viewport()->graphicsEffect());
    }

    void change_takesOverFromWhatIsDrawn()
    {
        AnimationClock clock;
        open(60);
        grid->setAnimated(true);
        const QRect first = item(0)->geometry();
        const QRect second = item(1)->geometry();
        const QPoint inFirst = first.topLeft() + QPoint(60, 4);
        const int opaque = darkness(inFirst);
        QVERIFY(darkness(first.bottomLeft() + QPoint(60, 8)) > 0); // the shadow
        ids.prepend(u"new"_s);
        ids.move(50, 2);
        grid->refresh();
        QCOMPARE(item(0)->geometry(), first);
        QVERIFY(item(49)->y() > grid->height()); // it was out of view
        clock.advance(400);
        const int halfway = qRound((first.x() + second.x()) / 2.0);
        QCOMPARE(item(0)->x(), halfway);
        const int half = darkness(inFirst);
        QVERIFY(half > 0 && half < opaque);
        ids.removeFirst(); // while it appears
        grid->refresh();
        QCOMPARE(item(0)->x(), halfway);
        QVERIFY(qAbs(darkness(inFirst) - half) <= 2);
        clock.advance(400);
        const int quarter = darkness(inFirst);
        QVERIFY(quarter > 0 && quarter < half - 2);
        ids.removeLast(); // while its picture fades
        grid->refresh();
        QVERIFY(qAbs(darkness(inFirst) - quarter) <= 2);
        clock.advance(800);
        QCOMPARE(item(0)->geometry(), first);
        QCOMPARE(darkness(inFirst), opaque);
        item(0)->setColor(Qt::white);
        QVERIFY(darkness(inFirst) < 0);

        // The page gets so short that it scrolls. On the screen, all begins where it is.
        bar()->setValue(bar()->maximum());
        const QPoint last = item(58)->pos();
        const QPoint inGone = item(55)->pos() + QPoint(99, 4);
        for (const int kept : {40, 1}) {
            ids.remove(kept, ids.size() - kept - 1);
            grid->refresh();
            QCOMPARE(item(58)->pos(), last);
            QVERIFY(qAbs(darkness(inGone) - opaque) <= 2);
        }
        clock.advance(800);
        // The scroll bar has left its width to the columns.
        QCOMPARE(item(58)->pos(), QPoint(12 + (grid->width() - 12) / 3, first.y()));
        QCOMPARE(darkness(inGone), 0);
    }

    void tab_reachesEveryControlInListOrderAndLeaves()
    {
        open(100);
        grid->setFocus();
        // Whether a key leads to the n-th control of all, with its card in view.
        const auto reaches = [this](Qt::Key key, int n) {
            QTest::keyClick(QApplication::focusWidget(), key);
            const Item *card = item(n / 2);
            return card && grid->viewport()->rect().contains(card->geometry()) &&
                   QApplication::focusWidget() == (n % 2 ? card->select : card->play);
        };
        for (int n = 0; n < 200; ++n)
            QVERIFY(reaches(Qt::Key_Tab, n));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QVERIFY(after->hasFocus());
        for (int n = 199; n >= 0; --n)
            QVERIFY(reaches(Qt::Key_Backtab, n));
        ids.removeFirst();
        grid->refresh();
        QVERIFY(grid->hasFocus());
        withControls = 2;
        bar()->setValue(bar()->maximum());
        QVERIFY(reaches(Qt::Key_Tab, 2));
        item(1)->play->hide();
        grid->setFocus();
        QVERIFY(reaches(Qt::Key_Tab, 3));
    }

    void click_scrollsNothingAway()
    {
        open(100);
        bar()->setValue(30);
        const QRect select(item(0)->select->mapTo(window.get(), QPoint()), item(0)->select->size());
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, select.center());
        QVERIFY(item(0)->select->hasFocus());
        QCOMPARE(bar()->value(), 30);
    }

    void assistiveTechnology_seesAGroupWithACheckBox()
    {
        open(1);
        const QAccessibleInterface *card = QAccessible::queryAccessibleInterface(item(0))->child(0);
        QCOMPARE(card->role(), QAccessible::Grouping);
        QCOMPARE(card->text(QAccessible::Name), u"0"_s);
        QAccessibleInterface *select = QAccessible::queryAccessibleInterface(item(0)->select);
        QCOMPARE(select->role(), QAccessible::CheckBox);
        QCOMPARE(item(0)->select->toolTip(), u"Select"_s);
        const QSignalSpy clicks(item(0)->select, &IconButton::clicked);
        select->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
        QCOMPARE(clicks.size(), 1);
        QVERIFY(!select->state().checked); // until the record is
        checked = ids.first();
        grid->refresh();
        QVERIFY(select->state().checked && select->state().focusable);
        item(0)->setTitle(u"<b>"_s);
        auto *title = item(0)->findChild<ElidedLabel *>();
        QCOMPARE(QAccessible::queryAccessibleInterface(title)->text(QAccessible::Name), item(0)->title());
    }
};

QTEST_MAIN(TestCardGrid)
#include "TestCardGrid.moc"
