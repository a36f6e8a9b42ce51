#pragma once

#include <QIcon>

class QPainter;

/// The program's own icons, known by symbol names such as "square.and.pencil".
///
/// They are drawn for each size and pixel ratio, in one colour, and cached. An unknown name is an empty icon,
/// and logged once: the text beside it, or its accessible name, still tells what it does.
namespace Symbol {

/// The symbol in `color`, by default in that of the text on buttons at the time of drawing; disabled controls
/// show it fainter.
QIcon icon(const QString &name, const QColor &color = {});

/// Draws the symbol in `color`, filling `target`.
void paint(QPainter *painter, const QRect &target, const QString &name, const QColor &color);

} // namespace Symbol
