#pragma once

#include "operations/privileged_runner.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The text of the administrator batch and the lines by which it answers. Pure functions.
namespace tidwen::adminBatch {

/// Single-quoted for /bin/sh: it's → 'it'\''s'.
std::string quoted(std::string_view text);

/// The one line of an operation. `userID` names the user's launchd domain.
std::string line(const RemovalOperation& operation, std::uint32_t userID);

/// "#!/bin/sh", then one line per operation, joined by line feeds, none at the end.
std::string script(const std::vector<RemovalOperation>& operations, std::uint32_t userID);

/// Reads the "OP <id> …" lines; exactly one result per operation, in their order. Lines end at line feeds and
/// carriage returns alike, because the scripting tool turns one into the other.
std::vector<OperationResult> parse(std::string_view standardOutput,
                                   const std::vector<RemovalOperation>& operations);

/// The source that makes osascript run the script as an administrator.
std::string appleScript(std::string_view script);

} // namespace tidwen::adminBatch
