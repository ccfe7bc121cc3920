#pragma once

#include <QFont>

namespace tidwen {

/// The size of the body text for which lengths are designed, in pixels.
inline constexpr int designTextSize = 13;

/// A designed length in pixels, grown with the text that the user reads.
int scaled(double length);

enum class Type { title, sheet, body, strong, second, section };
/// The font of the application in one of its sizes; figures in it are of one width.
QFont textFont(Type type);

} // namespace tidwen
