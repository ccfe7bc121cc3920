#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// A file of icons ("icns") reduced to one picture, in the same form with nothing else in it: the smallest of
/// at least `pixels` a side, else the largest. Only the table of at most 64 entries is read; whoever decodes
/// the result meets one square picture of at most 1024 pixels a side, in no more bytes than its pixels take.
/// nullopt when there is none.
std::optional<std::string> reducedIcon(std::string_view file, unsigned pixels);

} // namespace tidwen
