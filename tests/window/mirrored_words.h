#pragma once

#include <filesystem>
#include <string_view>

namespace tidwen::test {

/// The tag under which the mirrored words are spoken: one of a language that is written from the right.
constexpr std::string_view mirrored = "ar";

/// Adds to `folder` every shipped language and one more, to look at a window from right to left while its
/// words can still be read: the English ones, longer and in brackets.
void addMirroredWords(const std::filesystem::path& folder);

} // namespace tidwen::test
