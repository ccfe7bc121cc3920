#pragma once

#include <string_view>

/// Names that no single application owns, whoever bears them.
namespace tidwen {

/// What Apple makes bears its domain: "com.apple.notes", in any case. Such a bundle is part of the system.
bool isFromApple(std::string_view identifier);

/// Whether what is called so may be macOS's own: "com.apple.notes", and the same as a group: behind "group."
/// or a team
/// ("243LU875E5.groups.com.apple.notes"); and parts of macOS that bear others' names
/// ("is.workflow.shortcuts"). `identifier` is in lower case.
bool isApplesIdentifier(std::string_view identifier);

/// A group's name (lower-cased) without team prefix and "group.".
std::string_view withoutGroupPrefixes(std::string_view lowercased);

/// Parts that many applications carry (updaters, crash reporters, runtimes): a find with such an identifier
/// does not say whose it is. `identifier` is in lower case.
bool isCommonIdentifier(std::string_view identifier);

/// What macOS itself calls its folders and files in the Library without an identifier, the folders that
/// every Mac or every bundle has, and the executables that build tools put into many applications.
/// `canonicalName` as `canonicalForm` gives it.
bool isCommonName(std::string_view canonicalName);

} // namespace tidwen
