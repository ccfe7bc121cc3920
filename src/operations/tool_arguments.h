#pragma once

#include "base/path.h"
#include "operations/removal_operation.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What may be passed to a tool. Identifiers, labels and service names come from bundles and property lists
/// that anyone may have written, and quoting does not help against a word with a meaning to the tool itself.
namespace tidwen::toolArguments {

/// The text for an operation that is refused because an argument breaks its rule.
inline constexpr const char* unsafeArgumentKey = "failure.unsafeArgument";

/// A bundle identifier: an empty one would make tccutil reset every application, one beginning with "-" would
/// be an option.
bool isIdentifier(std::string_view text);

/// A job's label: an empty one, or one with a slash, could turn "gui/501/LABEL" into the whole session, which
/// launchctl would end.
bool isLabel(std::string_view text);

/// A keychain service: an empty one would match every item. It may begin with "-", because "-s" takes the
/// next word as it is.
bool isService(std::string_view text);

/// A path that reaches the shell unchanged through AppleScript: absolute, valid UTF-8, without NUL bytes and
/// carriage returns (AppleScript is known to rewrite only line endings).
bool isBatchPath(const Path& path);

/// Whether every argument of the operation passes its rule above.
bool areSafe(const RemovalOperation::Kind& kind);

/// The launchd domain of a job: "system" or "gui/501".
std::string launchdDomain(bool isSystemDomain, std::uint32_t userID);

} // namespace tidwen::toolArguments
