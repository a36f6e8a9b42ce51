#pragma once

#include <QPainterPath>

#include <optional>

/// The outline of a symbol on a grid of 16 by 16, to be drawn with a round pen that is 1.5 wide; nothing for
/// an unknown name.
std::optional<QPainterPath> symbolPath(const QString &name);
