#pragma once

#include "base/message.h"

#include <cstdint>
#include <filesystem>
#include <tl/expected.hpp>

namespace tidwen {

/// The result of `writeSampleVolume`.
struct SampleSummary {
    std::filesystem::path root; ///< absolute
    int applications = 0;       ///< number of installed applications
    std::uint64_t bytes = 0;
};

struct SampleError {
    bool nothingWritten = false; ///< refused before writing; otherwise part of the sample may exist
    Message reason;
};

/// Writes a Mac volume of invented applications with everything that Tidwen can find. `folder` must be empty
/// or not exist. Always produces the same bytes, modes and times.
tl::expected<SampleSummary, SampleError> writeSampleVolume(const std::filesystem::path& folder);

} // namespace tidwen
