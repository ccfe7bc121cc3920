#pragma once

#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Writes the script of the administrator batch and parses its output. Pure functions.
namespace tidwen::adminBatch {

/// The script line of one operation. `userID` identifies the user's launchd domain.
std::string line(const RemovalOperation& operation, std::uint32_t userID);

/// "#!/bin/sh", then one line per operation, separated by line feeds, without a final one.
std::string script(const std::vector<RemovalOperation>& operations, std::uint32_t userID);

/// Parses the "OP <id> …" lines; returns exactly one result per operation, in order. Accepts line feeds and
/// carriage returns as line ends, because the scripting tool converts one to the other.
std::vector<OperationResult> parse(std::string_view standardOutput,
                                   const std::vector<RemovalOperation>& operations);

/// The AppleScript source with which osascript runs the script as an administrator.
std::string appleScript(std::string_view script);

} // namespace tidwen::adminBatch
