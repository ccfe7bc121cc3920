#pragma once

#include <string_view>

namespace tidwen {

/// Two or more pieces of letters, digits, hyphens and underscores, with single dots between them, of which
/// the last is not a file's extension. What a bundle calls its identifier and is none ("x.app", "Arial.ttf",
/// ".GlobalPreferences") must not find anything: it is the name of somebody's file. In longer identifiers the
/// last piece may be a word that is also the extension of a bundle ("com.example.app").
bool isIdentifier(std::string_view text);

} // namespace tidwen
