#pragma once

#include "platform/code_signatures.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace tidwen {

/// Gives up to `length` bytes from `offset` of the file; fewer at its end, none after a failure.
using ByteSource = std::function<std::string(std::uint64_t offset, std::size_t length)>;

/// Reads team identifier and application groups out of the LC_CODE_SIGNATURE data of a thin or universal
/// Mach-O file (for a universal one from the arm64 slice when it has one). Only the parts that matter are
/// read, so a large executable costs a few kilobytes. Anything malformed yields what was sound up to there,
/// and is said to be unreadable when no slice is sound.
/// Layout: big-endian SuperBlob of CodeDirectory (team), XML entitlements and DER entitlements.
CodeSignature readMachOSignature(const ByteSource& file);

} // namespace tidwen
