#pragma once

#include <string>
#include <string_view>

namespace tidwen {

/// An icon in Apple's "icns" form, 128 pixels wide: a white figure on a coloured tile. The same name always
/// gets the same one.
std::string writeIcon(std::string_view name);

} // namespace tidwen
