#pragma once

#include "platform/mach_o_signature.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tidwen {

/// The team identifier named by a CodeDirectory; offsets of `directory` count from its first byte, and its
/// data ends at `available`. Returns nullopt when there is none (ad-hoc signatures, versions before 0x20200),
/// or when it is truncated, longer than 64 bytes or not printable ASCII.
std::optional<std::string> readTeamID(const ByteSource& directory, std::uint64_t available);

} // namespace tidwen
