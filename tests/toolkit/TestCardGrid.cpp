#include "toolkit/Card.h"
#include "toolkit/CardGrid.h"
#include "toolkit/ElidedLabel.h"
#include "toolkit/IconButton.h"

#include <QAccessible>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

struct Record
{
    QString id;
    QString title;
    bool isTall = false;
    bool isChecked = false;
};

class Item final : public Card
{
public:
    Item() : Card(100, 140)
    {
        first->setSymbol(u"play"_s, u"Play"_s);
        select->setSymbols(u"square"_s, u"checkmark.square"_s, u"Select"_s);
    }

    void show(const Record &record)
    {
        setTitle(record.title);
        text->setText(record.id);
        extra->setVisible(record.isTall);
        more->setVisible(record.isTall);
        select->setChecked(record.isChecked);
    }

    IconButton *first = addButton();
    IconButton *select = addButton();
    ElidedLabel *text = addText(Qt::white);
    ElidedLabel *extra = addText(Qt::white);
    ElidedLabel *more = addText(Qt::white);
};

} // namespace

class TestCardGrid final : public QObject
{
    Q_OBJECT

private:
    void open(int count)
    {
        records.clear();
        created = 0;
        for (int index = 0; index < count; ++index)
            records.append({QString::number(index), u"Bell %1"_s.arg(index)});
        window = std::make_unique<QWidget>();
        auto *column = new QVBoxLayout(window.get());
        column->setContentsMargins(0, 0, 0, 0);
        grid = new CardGrid(
            {[this] { return int(records.size()); }, [this](int index) { return records.at(index).id; },
             [this] {
                 ++created;
                 return new Item;
             },
             [this](Card *card, int index) { static_cast<Item *>(card)->show(records.at(index)); },
             [this](int index) { return int(records.at(index).isTall); }, [](int) { return true; }},
            10);
        grid->setAnimated(false);
        column->addWidget(grid);
        column->addWidget(after = new QLineEdit);
        window->resize(840, 480);
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    Item *item(const QString &id) const { return static_cast<Item *>(grid->card(id)); }
    QScrollBar *bar() const { return grid->verticalScrollBar(); }

    QList<Record> records;
    int created = 0;
    std::unique_ptr<QWidget> window;
    CardGrid *grid = nullptr;
    QLineEdit *after = nullptr;

private Q_SLOTS:
    void cleanup() { window.reset(); }

    void columns_fillTheWidth()
    {
        // The places of cards that are each one higher than the one before.
        const auto rects = [](int count, int width, Qt::LayoutDirection direction = Qt::LeftToRight) {
            const GridGeometry geometry(count, width, direction, [](int index) { return 100 + index; });
            QList<QRect> places;
            for (int index = 0; index < count; ++index)
                places << geometry.rect(index);
            return places;
        };
        QCOMPARE(rects(1, 200), (QList<QRect>{{12, 12, 176, 100}}));
        QCOMPARE(rects(2, 519), (QList<QRect>{{12, 12, 495, 100}, {12, 124, 495, 101}}));
        QCOMPARE(rects(3, 520), (QList<QRect>{{12, 12, 240, 101}, {268, 12, 240, 101}, {12, 125, 240, 102}}));
        QCOMPARE(rects(2, 520, Qt::RightToLeft), (QList<QRect>{{268, 12, 240, 101}, {12, 12, 240, 101}}));
    }

    void longList_makesCardsForTheViewOnlyInListOrder()
    {
        open(10000);
        for (int position = 0; position <= bar()->maximum(); position += 9973)
            bar()->setValue(position);
        QTest::keyClick(grid, Qt::Key_End);
        QVERIFY2(created < 60, qPrintable(QString::number(created)));
        records.move(9990, 9998);
        grid->refresh();
        QStringList shown;
        for (const Card *card : grid->viewport()->findChildren<Card *>()) {
            if (card->isVisible())
                shown << static_cast<const Item *>(card)->text->text();
        }
        QVERIFY(shown.size() >= 9 && shown.size() < 60);
        for (qsizetype i = 1; i <= shown.size(); ++i)
            QCOMPARE(shown[shown.size() - i], records[records.size() - i].id);
        QTest::keyClick(grid, Qt::Key_Home);
        QVERIFY(grid->card(u"0"_s));
    }

    void listShrinksBeforeTheRefresh_scrollingIsSafe()
    {
        open(300);
        records.resize(2);
        bar()->setValue(bar()->maximum());
        QVERIFY(grid->card(u"1"_s));
        QCOMPARE(bar()->maximum(), 0);
        records.clear();
        window->resize(500, 400);
        QTRY_VERIFY(!grid->card(u"0"_s));
    }

    void largeFont_getsTheHeightItNeeds()
    {
        open(3);
        records[0].isTall = true;
        grid->refresh();
        QFont large = grid->font();
        large.setPointSize(24);
        window->setFont(large);
        QTRY_COMPARE(item(u"0"_s)->more->height(), QFontMetrics(large).height());
        QTRY_VERIFY(item(u"0"_s)->height() >= item(u"0"_s)->more->geometry().bottom() + 12);
    }

    void removedCard_fadesAndIsGone()
    {
        open(2);
        grid->setAnimated(true);
        const QPoint place = item(u"1"_s)->geometry().center();
        const auto color = [&] { return grid->viewport()->grab().toImage().pixelColor(place); };
        records.removeLast();
        grid->refresh();
        QVERIFY(color() != grid->palette().color(QPalette::Window));
        QTRY_COMPARE(color(), grid->palette().color(QPalette::Window));
    }

    void tab_reachesEveryControlInListOrderAndLeaves()
    {
        open(100);
        grid->setFocus();
        QStringList reached;
        for (int step = 0; step < 250 && !after->hasFocus(); ++step) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            if (const auto *control = qobject_cast<IconButton *>(QApplication::focusWidget())) {
                reached << static_cast<Item *>(control->parentWidget()->parentWidget())->text->text() +
                               control->accessibleName();
                QVERIFY(grid->viewport()->rect().contains(
                    QRect(control->mapTo(grid->viewport(), QPoint()), control->size())));
            }
        }
        QVERIFY(after->hasFocus());
        QStringList all;
        for (const Record &record : std::as_const(records))
            all << record.id + u"Play"_s << record.id + u"Select"_s;
        QCOMPARE(reached, all);

        QTest::keyClick(after, Qt::Key_Backtab);
        QCOMPARE(QApplication::focusWidget(), item(u"99"_s)->select);
        records.removeLast();
        grid->refresh();
        QCOMPARE(QApplication::focusWidget(), grid);
    }

    void assistiveTechnology_seesAGroupWithACheckBox()
    {
        open(1);
        const QAccessibleInterface *card =
            QAccessible::queryAccessibleInterface(grid->card(u"0"_s))->child(0);
        QCOMPARE(card->role(), QAccessible::Grouping);
        QCOMPARE(card->text(QAccessible::Name), u"Bell 0"_s);
        QAccessibleInterface *select = QAccessible::queryAccessibleInterface(item(u"0"_s)->select);
        QCOMPARE(select->role(), QAccessible::CheckBox);
        const QSignalSpy clicks(item(u"0"_s)->select, &IconButton::clicked);
        select->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
        QCOMPARE(clicks.size(), 1);
        QVERIFY(!select->state().checked); // until the record is
        records[0].isChecked = true;
        grid->refresh();
        QVERIFY(select->state().checked && select->state().focusable);
    }
};

QTEST_MAIN(TestCardGrid)
#include "TestCardGrid.moc"
