#include "toolkit/SymbolPath.h"

#include <QPolygonF>
#include <QString>

#include <array>
#include <utility>

namespace {

constexpr qreal quarter = 90; // degrees; positive is counterclockwise

void addLine(QPainterPath &path, const QPolygonF &points)
{
    path.addPolygon(points);
}

void addBox(QPainterPath &path, const QRectF &box, qreal radius)
{
    path.addRoundedRect(box, radius, radius);
}

// From the current point to that at `start` degrees of the circle, and on along a quarter of it.
void addCorner(QPainterPath &path, const QPointF &center, qreal radius, qreal start, qreal sweep)
{
    path.arcTo(center.x() - radius, center.y() - radius, 2 * radius, 2 * radius, start, sweep);
}

void addCalendar(QPainterPath &path)
{
    addBox(path, {1.75, 2.75, 12.5, 11.5}, 2);
    addLine(path, {{1.75, 6.75}, {14.25, 6.75}});
    addLine(path, {{5, 1.25}, {5, 4.25}});
    addLine(path, {{11, 1.25}, {11, 4.25}});
}

void addCheckmark(QPainterPath &path)
{
    addLine(path, {{2.25, 8.75}, {6, 12.75}, {13.75, 3.25}});
}

void addSquare(QPainterPath &path)
{
    addBox(path, {1.75, 1.75, 12.5, 12.5}, 2.5);
}

void addCheckmarkSquare(QPainterPath &path)
{
    addSquare(path);
    addLine(path, {{4.75, 8.25}, {7, 10.5}, {11.25, 5.5}});
}

void addClock(QPainterPath &path)
{
    path.addEllipse(QPointF(8, 8), 6.25, 6.25);
    addLine(path, {{8, 4.25}, {8, 8}, {10.5, 10}});
}

void addFolder(QPainterPath &path)
{
    path.moveTo(1.75, 11.75);
    addCorner(path, {3.25, 4.25}, 1.5, 180, -quarter);
    path.lineTo(6, 2.75);
    path.lineTo(7.75, 4.75);
    addCorner(path, {12.75, 6.25}, 1.5, 90, -quarter);
    addCorner(path, {12.75, 11.75}, 1.5, 0, -quarter);
    addCorner(path, {3.25, 11.75}, 1.5, 270, -quarter);
    path.closeSubpath();
}

void addMusicNote(QPainterPath &path)
{
    addLine(path, {{5.75, 12.25}, {5.75, 3.25}, {13.75, 1.75}, {13.75, 10.75}});
    path.addEllipse(QPointF(3.75, 12.25), 2, 2);
    path.addEllipse(QPointF(11.75, 10.75), 2, 2);
}

void addNoSign(QPainterPath &path)
{
    path.addEllipse(QPointF(8, 8), 6.25, 6.25);
    addLine(path, {{3.6, 3.6}, {12.4, 12.4}});
}

void addPlay(QPainterPath &path)
{
    addLine(path, {{4.25, 2.5}, {4.25, 13.5}, {13.25, 8}});
    path.closeSubpath();
}

void addPlus(QPainterPath &path)
{
    addLine(path, {{8, 2.25}, {8, 13.75}});
    addLine(path, {{2.25, 8}, {13.75, 8}});
}

void addRepeat(QPainterPath &path)
{
    addLine(path, {{11, 1.25}, {13.75, 3.75}, {11, 6.25}});
    path.moveTo(13.5, 3.75);
    addCorner(path, {5.25, 6.75}, 3, 90, quarter);
    path.lineTo(2.25, 7.5);
    addLine(path, {{5, 14.75}, {2.25, 12.25}, {5, 9.75}});
    path.moveTo(2.5, 12.25);
    addCorner(path, {10.75, 9.25}, 3, 270, quarter);
    path.lineTo(13.75, 8.5);
}

void addSidebarLeft(QPainterPath &path)
{
    addBox(path, {1.75, 2.75, 12.5, 10.5}, 2);
    addLine(path, {{6.25, 2.75}, {6.25, 13.25}});
}

void addSquareAndPencil(QPainterPath &path)
{
    path.moveTo(7.25, 2.75);
    addCorner(path, {4.25, 4.75}, 2, 90, quarter);
    addCorner(path, {4.25, 11.75}, 2, 180, quarter);
    addCorner(path, {11.25, 11.75}, 2, 270, quarter);
    path.lineTo(13.25, 8.75);
    addLine(path, {{6.25, 9.75}, {6.65, 7.35}, {12, 2}});
    addCorner(path, {13, 3}, M_SQRT2, 135, -2 * quarter);
    path.lineTo(8.65, 9.35);
    path.closeSubpath();
}

void addStop(QPainterPath &path)
{
    addBox(path, {3.25, 3.25, 9.5, 9.5}, 1);
}

void addTrash(QPainterPath &path)
{
    addLine(path, {{2.25, 4.25}, {13.75, 4.25}});
    path.moveTo(5.75, 4.25);
    addCorner(path, {6.75, 2.75}, 1, 180, -quarter);
    addCorner(path, {9.25, 2.75}, 1, 90, -quarter);
    path.lineTo(10.25, 4.25);
    addLine(path, {{3.75, 4.25}, {4.35, 12.85}});
    path.cubicTo(4.4, 13.64, 5.06, 14.25, 5.85, 14.25);
    path.lineTo(10.15, 14.25);
    path.cubicTo(10.94, 14.25, 11.6, 13.64, 11.65, 12.85);
    path.lineTo(12.25, 4.25);
    addLine(path, {{6.75, 7.25}, {6.75, 11.25}});
    addLine(path, {{9.25, 7.25}, {9.25, 11.25}});
}

void addXmark(QPainterPath &path)
{
    addLine(path, {{3.25, 3.25}, {12.75, 12.75}});
    addLine(path, {{12.75, 3.25}, {3.25, 12.75}});
}

using Add = void (*)(QPainterPath &path);
constexpr std::array<std::pair<QStringView, Add>, 16> symbols{{
    {u"calendar", addCalendar},
    {u"checkmark", addCheckmark},
    {u"checkmark.square", addCheckmarkSquare},
    {u"clock", addClock},
    {u"folder", addFolder},
    {u"music.note", addMusicNote},
    {u"nosign", addNoSign},
    {u"play", addPlay},
    {u"plus", addPlus},
    {u"repeat", addRepeat},
    {u"sidebar.left", addSidebarLeft},
    {u"square", addSquare},
    {u"square.and.pencil", addSquareAndPencil},
    {u"stop.fill", addStop},
    {u"trash", addTrash},
    {u"xmark", addXmark},
}};

} // namespace

std::optional<QPainterPath> symbolPath(const QString &name)
{
    for (const auto &[symbol, add] : symbols) {
        if (symbol == name) {
            QPainterPath path;
            add(path);
            return path;
        }
    }
    return std::nullopt;
}
