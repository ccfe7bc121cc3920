#include "scan/matching/size_measurer.h"

#include "base/path.h"

#include <algorithm>
#include <system_error>

namespace tidwen {

FileResult<TreeSize> measuredSize(const FileSystem& files, const Path& item, const FileResult<FileInfo>& info,
                                  const StopToken& stop) {
    if (info && info->kind != FileKind::directory) return TreeSize{.allocatedBytes = info->allocatedBytes};
    return files.treeSize(item, traceSizeEntryLimit, stop);
}

SizeMeasurer::SizeMeasurer(const FileSystem& files, const StopToken& stop) : files_(files), stop_(stop) {
    // More would only wait for the disk.
    constexpr unsigned mostWorkers = 3;
    const auto wanted = std::min(mostWorkers, std::max(1u, std::thread::hardware_concurrency()) - 1);
    try {
        while (workers_.size() < wanted)
            workers_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        // No more threads can be created: those that started, and the caller of `finish`, do the work.
    }
}

SizeMeasurer::~SizeMeasurer() {
    close();
}

void SizeMeasurer::add(Path item) {
    {
        const std::lock_guard lock(mutex_);
        items_.push_back(std::move(item));
        sizes_.emplace_back();
    }
    changed_.notify_one();
}

std::vector<std::optional<TreeSize>> SizeMeasurer::finish() {
    {
        std::unique_lock lock(mutex_);
        measureQueued(lock);
    }
    close();
    return std::move(sizes_);
}

void SizeMeasurer::measureQueued(std::unique_lock<std::mutex>& lock) {
    while (next_ < items_.size()) {
        const auto index = next_++;
        const Path item = items_[index];
        lock.unlock();
        std::optional<TreeSize> size;
        if (!stop_.stopRequested())
            if (const auto tree = files_.treeSize(item, traceSizeEntryLimit, stop_);
                tree && !stop_.stopRequested())
                size = *tree;
        lock.lock();
        sizes_[index] = size;
    }
}

void SizeMeasurer::work() {
    std::unique_lock lock(mutex_);
    while (!isClosed_ || next_ < items_.size()) {
        measureQueued(lock);
        changed_.wait(lock, [this] { return isClosed_ || next_ < items_.size(); });
    }
}

void SizeMeasurer::close() {
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
    }
    changed_.notify_all();
    for (auto& worker : workers_)
        worker.join();
    workers_.clear();
}

} // namespace tidwen
