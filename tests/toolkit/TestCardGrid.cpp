#include "support/Table.h"
#include "toolkit/Card.h"
#include "toolkit/CardGrid.h"
#include "toolkit/ElidedLabel.h"
#include "toolkit/IconButton.h"
#include "toolkit/TiltEffect.h"

#include <QAccessible>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
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
        first = addButton();
        first->setSymbol(u"play"_s, u"Play"_s);
        select = addButton();
        select->setSymbols(u"square"_s, u"checkmark.square"_s, u"Select"_s);
        addSpace();
        text = addText(Qt::white);
        extra = addText(Qt::white);
        more = addText(Qt::white);
        setColor(Qt::red);
    }

    void show(const Record &record)
    {
        setTitle(record.title);
        text->setText(record.id);
        extra->setVisible(record.isTall);
        more->setVisible(record.isTall);
        select->setChecked(record.isChecked);
    }

    IconButton *first;
    IconButton *select;
    ElidedLabel *text;
    ElidedLabel *extra;
    ElidedLabel *more;
};

} // namespace

class TestCardGrid final : public QObject
{
    Q_OBJECT

private:
    void open(int count, bool animated = false)
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
             [this](Card *card, int index) { item(card)->show(records.at(index)); },
             [this](int index) { return int(records.at(index).isTall); }, [](int) { return true; }},
            10);
        grid->setAnimated(animated);
        column->addWidget(grid);
        column->addWidget(after = new QLineEdit);
        window->resize(840, 480);
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    static Item *item(Card *card) { return static_cast<Item *>(card); }
    Item *item(const QString &id) const { return item(grid->card(id)); }
    QScrollBar *bar() const { return grid->verticalScrollBar(); }

    QList<Record> records;
    int created = 0;
    std::unique_ptr<QWidget> window;
    CardGrid *grid = nullptr;
    QLineEdit *after = nullptr;

private Q_SLOTS:
    void cleanup() { window.reset(); }

    void columns_fillTheWidth_data()
    {
        columns<int, Qt::LayoutDirection, QList<QRect>>("width", "direction", "rects");
        QTest::newRow("one column takes all the width, however narrow")
            << 200 << Qt::LeftToRight << QList<QRect>{{12, 12, 176, 100}};
        QTest::newRow("one column until two are 240 wide")
            << 519 << Qt::LeftToRight << QList<QRect>{{12, 12, 495, 100}, {12, 124, 495, 101}};
        QTest::newRow("two columns; a row is as high as its highest card")
            << 520 << Qt::LeftToRight
            << QList<QRect>{{12, 12, 240, 101}, {268, 12, 240, 101}, {12, 125, 240, 102}};
        QTest::newRow("right-to-left begins at the right")
            << 520 << Qt::RightToLeft << QList<QRect>{{268, 12, 240, 101}, {12, 12, 240, 101}};
    }

    void columns_fillTheWidth()
    {
        QFETCH(int, width);
        QFETCH(Qt::LayoutDirection, direction);
        QFETCH(QList<QRect>, rects);
        const GridGeometry geometry(int(rects.size()), width, direction,
                                    [](int index) { return 100 + index; });
        for (int index = 0; index < rects.size(); ++index)
            QCOMPARE(geometry.rect(index), rects[index]);
        QCOMPARE(geometry.height(), rects.last().bottom() + 1 + 12);
    }

    void longList_makesCardsForTheViewOnlyInListOrder()
    {
        open(10000);
        for (int position = 0; position <= bar()->maximum(); position += 9973)
            bar()->setValue(position);
        bar()->setValue(bar()->maximum());
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
    }

    void change_keepsTheCardOfARecord()
    {
        open(9);
        Card *const card = grid->card(u"4"_s);
        const QRect before = card->geometry();
        records.move(4, 0);
        records.insert(0, {u"new"_s, u"New"_s});
        records.removeAt(5);
        grid->refresh();
        QCOMPARE(grid->card(u"4"_s), card);
        QVERIFY(card->geometry() != before);
        QCOMPARE(grid->card(u"new"_s)->y(), 12);
        QVERIFY(!grid->card(u"3"_s));
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

    void changes_glideAndMayBeInterrupted()
    {
        open(12, true);
        QTRY_VERIFY(!grid->isMoving());
        const QPoint home = grid->card(u"1"_s)->pos();
        const QPoint origin = grid->card(u"0"_s)->pos();
        records.removeFirst();
        grid->refresh();
        QVERIFY(grid->isMoving());
        QTRY_VERIFY(grid->card(u"1"_s)->pos() != home);
        const QPoint onTheWay = grid->card(u"1"_s)->pos();
        QVERIFY(onTheWay != origin);
        records.prepend({u"new"_s, u"New"_s});
        grid->refresh();
        QVERIFY((grid->card(u"1"_s)->pos() - onTheWay).manhattanLength() < 30);
        QVERIFY(grid->card(u"new"_s)->graphicsEffect());
        QTRY_VERIFY(!grid->isMoving());
        QCOMPARE(grid->card(u"1"_s)->pos(), home);
        QCOMPARE(grid->card(u"new"_s)->pos(), origin);
        QVERIFY(!grid->card(u"new"_s)->graphicsEffect());
    }

    void firstShow_tiltsOnce()
    {
        open(12, true);
        QVERIFY(grid->viewport()->graphicsEffect());
        QTRY_VERIFY(!grid->viewport()->graphicsEffect());
        grid->hide();
        grid->show();
        QVERIFY(!grid->viewport()->graphicsEffect());
        // 200 (1 - cos 20° / (1 + 0.2 · 200 sin 20° / 800))
        QVERIFY(qAbs(TiltEffect::transform({0, 0, 800, 400}, 20).map(QPointF(400, 0)).y() - 15.22) < 0.05);
    }

    void anyTitle_keepsTheSizeAndIsTheToolTip_data()
    {
        columns<QString, bool>("title", "elided");
        QTest::newRow("no text at all") << QString() << false;
        QTest::newRow("Arabic and an emoji") << u"جرس الصباح 🔔"_s << false;
        QTest::newRow("Chinese") << QString(500, QChar(0x8bfe)) << true;
        QTest::newRow("what looks like mark-up") << QString(40, u'x') + u"<b>bold</b>"_s << true;
        QTest::newRow("two lines") << u"a\nb"_s << false;
    }

    void anyTitle_keepsTheSizeAndIsTheToolTip()
    {
        QFETCH(QString, title);
        QFETCH(bool, elided);
        open(3);
        const QSize size = grid->card(u"0"_s)->size();
        records[0].title = title;
        grid->refresh();
        QCOMPARE(grid->card(u"0"_s)->size(), size);
        auto *label = grid->card(u"0"_s)->findChild<ElidedLabel *>();
        QTRY_COMPARE(label->isElided(), elided);
        QHelpEvent hover(QEvent::ToolTip, label->rect().center(), label->mapToGlobal(label->rect().center()));
        QCoreApplication::sendEvent(label, &hover);
        QCOMPARE(QToolTip::text().contains(title.toHtmlEscaped()) && !title.isEmpty(), elided);
        QToolTip::hideText();
    }

    void largeFont_getsTheHeightItNeeds()
    {
        open(3);
        records[0].isTall = true;
        QFont large = grid->font();
        large.setPointSize(24);
        window->setFont(large);
        QTRY_COMPARE(item(u"0"_s)->more->height(), QFontMetrics(large).height());
        QTRY_VERIFY(item(u"0"_s)->height() >= item(u"0"_s)->more->geometry().bottom() + 12);
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
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QCOMPARE(QApplication::focusWidget(), item(u"99"_s)->first);
    }

    void homeAndEnd_scroll()
    {
        open(1000);
        QTest::keyClick(grid, Qt::Key_End);
        QCOMPARE(bar()->value(), bar()->maximum());
        QTest::keyClick(grid, Qt::Key_Home);
        QCOMPARE(bar()->value(), 0);
    }

    void focusedCardGoes_gridKeepsTheKeyboard()
    {
        open(9);
        item(u"0"_s)->select->setFocus();
        records.removeFirst();
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
        QCOMPARE(select->text(QAccessible::Name), u"Select"_s);
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
