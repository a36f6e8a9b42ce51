#pragma once

#include <QColor>
#include <QEasingCurve>
#include <QFont>
#include <QPalette>
#include <QSize>

#include <functional>

class QPainter;

/// The measures, colours and curves that the screens share. Lengths are in device-independent pixels.
namespace Style {

/// The standard inset around a page, a card's content and a sheet's content.
inline constexpr int inset = 12;
/// Between neighbours in a row of controls.
inline constexpr int spacing = 8;

inline constexpr int columnGap = 16;
inline constexpr int rowGap = 12;
inline constexpr int lineGap = 5;
inline constexpr int cardWidth = 240;
inline constexpr qreal cardRadius = 10;

inline constexpr int iconSize = 16;
/// The side of the square around an icon that takes its clicks.
inline constexpr int hitSize = 24;

inline constexpr QSize sheetSize{450, 250};
inline constexpr QSize sheetMaximum{800, 600};
inline constexpr int labelWidth = 60;
/// From the leading edge of a form's rows to their fields and buttons.
inline constexpr int fieldOffset = 70;

inline constexpr int animationMilliseconds = 800;

inline constexpr QColor planColor{255, 89, 101};
inline constexpr QColor holidayColor{142, 90, 247};
inline constexpr QColor historyColor{0, 133, 255};
/// The card of a plan that plays.
inline constexpr QColor green{20, 117, 54};
/// The progress of a playback, and what lies under it.
inline constexpr QColor lightGreen{144, 238, 161};
inline constexpr QColor trackColor{0, 0, 0, 90};

/// White text and icons on a card, full and softened.
inline constexpr QColor white{255, 255, 255};
inline constexpr QColor softWhite{255, 255, 255, 179};
/// A dark grey at half opacity: a label on a card that is off.
inline constexpr QColor softGrey{40, 40, 44, 128};

enum class Accent { red, green, blue };

/// True when `palette` is that of a dark scheme.
bool isDark(const QPalette &palette);

/// The accent as text or icon on the window background of `palette`, at a contrast of at least 4.5 to 1.
QColor accent(Accent accent, const QPalette &palette);

/// A line between two areas on the window background of `palette`.
QColor lineColor(const QPalette &palette);

/// The background of a sidebar that sets it apart from the window background of `palette`.
QColor sidebarColor(const QPalette &palette);

/// `length`, which suits a font of the usual size, enlarged in proportion for a larger `font`.
int scaledToFont(int length, const QFont &font);

/// The size of an icon beside text in `font`.
QSize iconSizeBeside(const QFont &font);

/// Draws the frame of a control that has the keyboard focus, just inside `rect`.
void paintFocus(QPainter *painter, const QRect &rect, const QColor &color);

/// `font` in a size multiplied by `factor`.
QFont scaled(QFont font, qreal factor);

/// The largest scale from 1 down to `minimum`, in steps of 0.05, for which `fits` returns true; `minimum`
/// when none does.
qreal fittingScale(qreal minimum, const std::function<bool(qreal scale)> &fits);

/// The font of titles beside text in `font`: bold and larger.
QFont titleFont(const QFont &font);

/// The ease-in-out curve with the control points (0.42, 0) and (0.58, 1).
QEasingCurve easeInOut();

} // namespace Style
