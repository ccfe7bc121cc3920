#include "app/style/palette.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tidwen {

namespace {

struct Value {
    QRgb light;
    QRgb dark;
};

/// In the order of the roles.
constexpr std::array values = {
    Value{0xf6f6f8, 0x1c1d21}, Value{0xffffff, 0x25262b}, Value{0xecedf1, 0x212227},
    Value{0x1b1c1f, 0xf1f2f4}, Value{0x5d6068, 0xa9adb8}, Value{0xd9dbe1, 0x393b43},
    Value{0x2460d8, 0x7ea6ff}, Value{0xffffff, 0x0e1526}, Value{0x187a43, 0x67d391},
    Value{0xe2f3e9, 0x1d3527}, Value{0x8f5a00, 0xf0b95a}, Value{0xfbefd6, 0x3a2f1a},
    Value{0xb3261e, 0xff8a80}, Value{0xfae3e1, 0x40211f}, Value{0xe3e5eb, 0x383a43},
    Value{0xe9ebf1, 0x2f3138}, Value{0xdfe8fb, 0x263556},
};

double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

} // namespace

QColor Colors::operator[](Role role) const {
    const auto& value = values[static_cast<std::size_t>(role)];
    return QColor::fromRgb(appearance_ == Appearance::dark ? value.dark : value.light);
}

QPalette Colors::palette() const {
    constexpr std::array<std::pair<QPalette::ColorRole, Role>, 19> roles = {{
        {QPalette::Window, Role::window},
        {QPalette::WindowText, Role::text},
        {QPalette::Base, Role::surface},
        {QPalette::AlternateBase, Role::window},
        {QPalette::Text, Role::text},
        {QPalette::Button, Role::surface},
        {QPalette::ButtonText, Role::text},
        {QPalette::BrightText, Role::text},
        {QPalette::Highlight, Role::accent},
        {QPalette::HighlightedText, Role::onAccent},
        {QPalette::Link, Role::accent},
        {QPalette::LinkVisited, Role::accent},
        {QPalette::Mid, Role::line},
        {QPalette::Midlight, Role::track},
        {QPalette::Dark, Role::second},
        {QPalette::Light, Role::surface},
        {QPalette::ToolTipBase, Role::surface},
        {QPalette::ToolTipText, Role::text},
        {QPalette::PlaceholderText, Role::second},
    }};
    QPalette palette;
    for (const auto& [theirs, ours] : roles)
        palette.setColor(QPalette::All, theirs, (*this)[ours]);
    palette.setColor(QPalette::All, QPalette::Shadow, QColor(0, 0, 0, 60));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, (*this)[Role::second]);
    return palette;
}

double contrast(const QColor& a, const QColor& b) {
    const auto [dark, light] = std::minmax(luminance(a), luminance(b));
    return (light + 0.05) / (dark + 0.05);
}

} // namespace tidwen
