// Draws every screen and editor with a fixed timetable, light and dark.
// Arguments: the folder for the pictures, and a locale, for the texts of its language.

#include "app/Language.h"
#include "support/Controls.h"
#include "support/MainWindow.h"
#include "toolkit/Style.h"
#include "ui/Sidebar.h"

#include <QDialog>
#include <QPainter>
#include <QStyle>
#include <QStyleFactory>

using namespace Qt::StringLiterals;

namespace {

QPalette darkPalette()
{
    QPalette palette(QColor(50, 50, 54), QColor(38, 38, 42));
    palette.setColor(QPalette::Base, QColor(28, 28, 31));
    palette.setColor(QPalette::Highlight, QColor(42, 112, 190));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, QColor(160, 160, 165));
    return palette;
}

void fill(MainWindow &desk)
{
    for (const auto &[title, begin] : {std::pair{u"Morning bell"_s, u"08:00"_s},
                                       {u"Second period"_s, u"08:50"_s},
                                       {u"Break"_s, u"09:35"_s},
                                       {u"Third period"_s, u"09:55"_s},
                                       {u"Lunch: the long chime"_s, u"12:15"_s},
                                       {u"放学铃"_s, u"15:30"_s}})
        desk.addPlan(title, begin);
    desk.planStore.plans.modify([](QList<Plan> &plans) {
        for (Plan &plan : plans)
            plan.end = QTime::fromString(plan.begin, u"HH:mm"_s).addSecs(120).toString(u"HH:mm"_s);
        plans[4].isLoop = plans[4].week6 = true;
    });
    for (const auto &[title, begin, end] : {std::tuple{u"Easter"_s, u"2026-03-30"_s, u"2026-04-10"_s},
                                            {u"May Day"_s, u"2026-05-01"_s, u"2026-05-01"_s},
                                            {u"Summer"_s, u"2026-07-20"_s, u"2026-08-31"_s}})
        desk.holidayStore.addHoliday({false, Records::newId(), title, begin, end});
}

// The window with the sheet or alert that lies over it, if there is one.
void take(const QString &folder, const QString &name, QWidget &window)
{
    QTest::qWait(50);
    QPixmap picture = window.grab();
    if (auto *dialog = QApplication::activeModalWidget()) {
        QPainter painter(&picture);
        painter.fillRect(picture.rect(), QColor(0, 0, 0, 60));
        const QRect place = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignHCenter | Qt::AlignTop,
                                                dialog->size(), window.rect());
        painter.drawPixmap(place, dialog->grab());
        painter.setPen(QColor(0, 0, 0, 90));
        painter.drawRect(place.adjusted(-1, -1, 0, 0));
    }
    picture.save(folder + u'/' + name + u".png"_s);
}

void takeAll(const QString &folder, const QString &scheme)
{
    MainWindow desk;
    fill(desk);
    desk.open();
    const auto shot = [&](const QString &name) { take(folder, name + scheme, desk.window); };
    const auto editor = [&](const QString &button, const QString &name) {
        click(&desk.window, button);
        shot(name);
        QApplication::activeModalWidget()->close();
        QTest::qWait(0);
    };
    desk.tick("08:00:00");
    desk.stage.sounding->setCurrentTime(31);
    desk.tick("08:00:31");
    shot(u"plans"_s);
    click(desk.toolBar(), ContentView::tr("Edit"));
    shot(u"plans-edit"_s);
    editor(ContentView::tr("Add Plan"), u"plan-editor"_s);
    desk.chooseScreen(Sidebar::tr("Holiday"));
    shot(u"holidays"_s);
    editor(ContentView::tr("Add Holiday"), u"holiday-editor"_s);
    editor(ContentView::tr("Delete"), u"delete"_s);
    desk.tick("08:02:00");
    desk.tick("08:50:00");
    desk.chooseScreen(Sidebar::tr("History"));
    shot(u"history"_s);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    const QString folder = QString::fromLocal8Bit(argc > 1 ? argv[1] : ".");
    QLocale::setDefault(QLocale(QString::fromLocal8Bit(argc > 2 ? argv[2] : "C")));
    const Language language(Resources::ofApplication());
    takeAll(folder, QString());
    QApplication::setPalette(darkPalette());
    takeAll(folder, u"-dark"_s);
}
