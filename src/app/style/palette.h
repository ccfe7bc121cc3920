#pragma once

#include <QColor>
#include <QPalette>
#include <array>

namespace tidwen {

/// What a colour is for. Whoever paints names the role, never a value.
enum class Role {
    window,
    surface,
    sidebar,
    text,
    second,
    line,
    accent,
    onAccent,
    safe,
    safeGround,
    look,
    lookGround,
    sensitive,
    sensitiveGround,
    track,
    hover,
    chosen,
};

enum class Appearance { light, dark };

/// The colours of one appearance.
class Colors {
  public:
    explicit Colors(Appearance appearance) : appearance_(appearance) {}

    QColor operator[](Role role) const;
    Appearance appearance() const { return appearance_; }
    /// Every role of the toolkit's palette: what is left out would come from the system.
    QPalette palette() const;

  private:
    Appearance appearance_;
};

/// What is painted on what, and how much contrast it needs at least: 4.5 for text, 3 for marks.
struct ColorPair {
    Role front;
    Role ground;
    double contrast;
};
inline constexpr double textContrast = 4.5;
inline constexpr double markContrast = 3;
inline constexpr std::array usedColorPairs = {
    ColorPair{Role::text, Role::window, textContrast},
    ColorPair{Role::text, Role::surface, textContrast},
    ColorPair{Role::text, Role::sidebar, textContrast},
    ColorPair{Role::text, Role::hover, textContrast},
    ColorPair{Role::text, Role::chosen, textContrast},
    ColorPair{Role::second, Role::window, textContrast},
    ColorPair{Role::second, Role::surface, textContrast},
    ColorPair{Role::second, Role::sidebar, textContrast},
    ColorPair{Role::second, Role::hover, textContrast},
    ColorPair{Role::second, Role::chosen, textContrast},
    ColorPair{Role::accent, Role::chosen, textContrast},
    ColorPair{Role::accent, Role::window, textContrast},
    ColorPair{Role::onAccent, Role::accent, textContrast},
    ColorPair{Role::safe, Role::safeGround, textContrast},
    ColorPair{Role::look, Role::lookGround, textContrast},
    ColorPair{Role::sensitive, Role::sensitiveGround, textContrast},
    ColorPair{Role::safe, Role::window, markContrast},
    ColorPair{Role::look, Role::window, markContrast},
    ColorPair{Role::sensitive, Role::window, markContrast},
    ColorPair{Role::accent, Role::track, markContrast},
};

/// As accessibility guidelines compute it: 1 (none) to 21.
double contrast(const QColor& a, const QColor& b);

} // namespace tidwen
