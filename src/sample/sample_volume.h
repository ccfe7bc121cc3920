#pragma once

#include "base/message.h"

#include <cstdint>
#include <filesystem>
#include <tl/expected.hpp>

namespace tidwen {

/// What `writeSampleVolume` wrote.
struct SampleSummary {
    std::filesystem::path root; ///< absolute
    int applications = 0;       ///< those that are installed
    std::uint64_t bytes = 0;
};

struct SampleError {
    bool nothingWritten = false; ///< refused beforehand; else part of the sample may stand there
    Message reason;
};

/// Writes a Mac volume of invented applications with everything Tidwen knows how to find. `folder` must be
/// empty or not exist. The same bytes, modes and times every time.
tl::expected<SampleSummary, SampleError> writeSampleVolume(const std::filesystem::path& folder);

} // namespace tidwen
