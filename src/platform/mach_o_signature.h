#pragma once

#include "platform/code_signatures.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace tidwen {

/// Returns up to `length` bytes from `offset` of the file; fewer at its end, none after a failure.
using ByteSource = std::function<std::string(std::uint64_t offset, std::size_t length)>;

/// Reads team identifier and application groups from the LC_CODE_SIGNATURE data of a thin or universal Mach-O
/// file (of a universal one from the arm64 slice if present). Reads only the parts it needs, a few kilobytes
/// of a large executable. For malformed data returns what was valid up to that point; `isUnreadable` when no
/// slice is valid. Layout: big-endian SuperBlob of CodeDirectory (team), XML entitlements and DER
/// entitlements.
CodeSignature readMachOSignature(const ByteSource& file);

} // namespace tidwen
