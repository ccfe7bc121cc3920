#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tidwen {

/// Limit of entries per size measurement, of traces, installers and history folders.
inline constexpr std::uint64_t traceSizeEntryLimit = 20'000;
inline constexpr std::uint64_t historySizeEntryLimit = 2'000;

/// The size of what `info` describes: only a folder must be walked.
FileResult<TreeSize> measuredSize(const FileSystem& files, const Path& item, const FileResult<FileInfo>& info,
                                  const StopToken& stop);

/// Measures finds on the other cores while the scan continues: most of a scan's time is the walk through the
/// application's bundle, which is found first.
class SizeMeasurer {
  public:
    SizeMeasurer(const FileSystem& files, const StopToken& stop);
    ~SizeMeasurer();
    SizeMeasurer(const SizeMeasurer&) = delete;
    SizeMeasurer& operator=(const SizeMeasurer&) = delete;

    void add(Path item);

    /// Helps until all is measured. Gives one answer for each `add`, in their order: of the first
    /// `traceSizeEntryLimit` entries; nothing where that cannot be told or was stopped.
    std::vector<std::optional<TreeSize>> finish();

  private:
    void measureQueued(std::unique_lock<std::mutex>& lock);
    void work();
    void close();

    const FileSystem& files_;
    const StopToken& stop_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Path> items_;
    std::vector<std::optional<TreeSize>> sizes_;
    std::size_t next_ = 0; ///< the first item that nobody measures yet
    bool isClosed_ = false;
    std::vector<std::thread> workers_;
};

} // namespace tidwen
