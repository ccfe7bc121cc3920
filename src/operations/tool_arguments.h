#pragma once

#include "base/path.h"
#include "operations/removal_operation.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What may be handed to a tool. Identifiers, labels and service names come from bundles and property lists
/// that anybody may have written, and quoting does not help against a word that means something to the tool.
namespace tidwen::toolArguments {

/// The text that an operation is refused with whose argument breaks its rule.
inline constexpr const char* unsafeArgumentKey = "failure.unsafeArgument";

/// A bundle identifier: an empty one would make tccutil reset every application, one that begins with "-"
/// would be an option.
bool isIdentifier(std::string_view text);

/// A job's label: an empty one, or one with a slash, could turn "gui/501/LABEL" into the name of the whole
/// session, which launchctl would end.
bool isLabel(std::string_view text);

/// A keychain service: an empty one would match every item. "-s" takes the next word whatever it begins with.
bool isService(std::string_view text);

/// A path that reaches the shell unchanged through AppleScript: absolute, valid UTF-8, without zero bytes and
/// carriage returns (line endings are the one thing AppleScript is known to rewrite).
bool isBatchPath(const Path& path);

/// Every argument of the operation passes the rule above that fits it.
bool areSafe(const RemovalOperation::Kind& kind);

/// "system", or "gui/501": the launchd domain of a job.
std::string launchdDomain(bool isSystemDomain, std::uint32_t userID);

} // namespace tidwen::toolArguments
