#pragma once

#include "base/descriptor.h"
#include "sample/sample_volume.h"

#include <filesystem>
#include <memory>
#include <tl/expected.hpp>

namespace tidwen {

/// A sample volume in a folder of its own in the system's temporary one. The folder is removed with this
/// object; after a crash, when the next one is written.
class TemporarySample {
  public:
    static tl::expected<std::unique_ptr<TemporarySample>, SampleError> write();
    ~TemporarySample();
    TemporarySample(const TemporarySample&) = delete;
    TemporarySample& operator=(const TemporarySample&) = delete;

    const std::filesystem::path& root() const { return root_; }

  private:
    explicit TemporarySample(const std::filesystem::path& folder);

    std::filesystem::path folder_, root_;
    Descriptor lock_; ///< on the folder, which tells other processes that it is in use
};

} // namespace tidwen
