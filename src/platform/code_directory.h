#pragma once

#include "platform/mach_o_signature.h"

#include <optional>
#include <string>

namespace tidwen {

/// The team identifier that a CodeDirectory names; offsets of `directory` count from its first byte, and
/// nothing past `available` belongs to it. Nothing when it names none (ad-hoc signatures, versions before
/// 0x20200), or names one that is cut off, longer than 64 bytes or not printable ASCII.
std::optional<std::string> readTeamID(const ByteSource& directory, std::uint64_t available);

} // namespace tidwen
