#pragma once

#include <string_view>

namespace tidwen {

/// Two or more pieces of letters, digits, hyphens and underscores, with single dots between them, of which
/// the last is not the extension of a file or bundle. What a bundle calls its identifier and is none
/// ("x.app", "Acme.Reverb.component", "Arial.ttf", ".GlobalPreferences") must not find anything: it is the
/// name of somebody's file. Only "app" may end an identifier of three pieces and more, as it ends many honest
/// ones ("com.example.app"); a file that is itself a bundle of that name is told by looking at it.
bool isIdentifier(std::string_view text);

/// The same whatever the last piece is: not the name that people give an application.
bool hasIdentifierForm(std::string_view text);

} // namespace tidwen
