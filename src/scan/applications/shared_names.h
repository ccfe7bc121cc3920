#pragma once

#include <string_view>

/// Names shared by many applications; never evidence of ownership.
namespace tidwen {

/// An identifier in Apple's domain: "com.apple.notes", in any letter case. Such a bundle is part of the
/// system.
bool isFromApple(std::string_view identifier);

/// Whether the identifier may be macOS's own: "com.apple.notes"; the same as a group, after "group." or a
/// team ("243LU875E5.groups.com.apple.notes"); and parts of macOS with other vendors' identifiers
/// ("is.workflow.shortcuts"). `identifier` is in lower case.
bool isApplesIdentifier(std::string_view identifier);

/// A lower-cased group name without team prefix and "group.".
std::string_view withoutGroupPrefixes(std::string_view lowercased);

/// Components that many applications carry (updaters, crash reporters, runtimes): such an identifier does not
/// show the owner. `identifier` is in lower case.
bool isCommonIdentifier(std::string_view identifier);

/// One that a builder of applications writes where their maker chose none: it says as little as no
/// identifier. `identifier` is in lower case.
bool isPlaceholderIdentifier(std::string_view identifier);

/// Names that macOS itself gives to Library folders and files without an identifier, folders that every Mac
/// or every bundle has, and executables that build tools put into many applications. `canonicalName` as
/// returned by `canonicalForm`.
bool isCommonName(std::string_view canonicalName);

} // namespace tidwen
