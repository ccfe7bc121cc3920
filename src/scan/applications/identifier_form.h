#pragma once

#include <string_view>

namespace tidwen {

/// Two or more components of letters, digits, hyphens and underscores, separated by single dots, the last of
/// which is not a file or bundle extension. A bundle's "identifier" without this form ("x.app",
/// "Acme.Reverb.component", "Arial.ttf", ".GlobalPreferences") must match nothing, because it is the name of
/// another's file. Only "app" may end an identifier of three or more components, as in many genuine ones
/// ("com.example.app"); whether a file of that name is a bundle is checked on the disk.
bool isIdentifier(std::string_view text);

/// The same with any last component: not a name people give an application.
bool hasIdentifierForm(std::string_view text);

/// Whether an identifier is this one, or goes on from it with further components; in the same letter case.
inline bool continuesIdentifier(std::string_view identifier, std::string_view beginning) {
    return identifier.starts_with(beginning)
           && (identifier.size() == beginning.size() || identifier[beginning.size()] == '.');
}

} // namespace tidwen
