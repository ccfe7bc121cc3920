#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "posix/tree_ownership.h"
#include "posix/tree_removal.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen::test {

/// A file system wrapper that counts calls and runs a test's code before the call of a given number: to
/// change the disk during a read, or to stop the reader.
class WatchedFiles : public FileSystem {
  public:
    explicit WatchedFiles(FileSystem& files) : files_(files) {}

    /// Runs `what` once, before call number `call`, counted from zero.
    void before(std::size_t call, std::function<void()> what) {
        calls_ = 0;
        call_ = call;
        what_ = std::move(what);
    }
    std::size_t calls() const { return calls_; }

    /// What was read and listed since the last call.
    std::multiset<Path> takeReads() {
        const std::lock_guard lock(mutex_);
        return std::exchange(reads_, {});
    }

    FileResult<FileInfo> info(const Path& path) const override { return watched().info(path); }
    FileResult<FileInfo> infoFollowingLinks(const Path& path) const override {
        return watched().infoFollowingLinks(path);
    }
    FileResult<std::vector<DirectoryEntry>> list(const Path& folder) const override {
        return noted(folder).list(folder);
    }
    FileResult<std::string> read(const Path& file, std::size_t maxBytes) const override {
        return noted(file).read(file, maxBytes);
    }
    FileResult<std::string> readRange(const Path& file, std::uint64_t offset,
                                      std::size_t length) const override {
        return watched().readRange(file, offset, length);
    }
    FileResult<std::string> extendedAttribute(const Path& path, const std::string& name) const override {
        return watched().extendedAttribute(path, name);
    }
    FileResult<Path> resolve(const Path& path) const override { return watched().resolve(path); }
    FileResult<TreeSize> treeSize(const Path& path, std::uint64_t entryLimit,
                                  const StopToken& stop) const override {
        return watched().treeSize(path, entryLimit, stop);
    }
    bool isMovable(const Path& path) const override { return watched().isMovable(path); }

    FileResult<void> createDirectory(const Path& folder) override { return files_.createDirectory(folder); }
    FileResult<void> createDirectories(const Path& folder) override {
        return files_.createDirectories(folder);
    }
    MoveResult move(const Path& from, const Path& to) override { return files_.move(from, to); }
    MoveResult settleInterruptedMove(const Path& from, const Path& to) override {
        return files_.settleInterruptedMove(from, to);
    }
    bool isSetAside(const Path& from) const override { return files_.isSetAside(from); }
    FileResult<std::vector<Path>> revealRemains(const Path& from) override {
        return files_.revealRemains(from);
    }
    FileResult<void> replaceFile(const Path& file, std::string_view content, NewFileMode mode) override {
        return files_.replaceFile(file, content, mode);
    }
    void dropUnfinishedReplacement(const Path& file) override { files_.dropUnfinishedReplacement(file); }
    FileResult<void> removeFile(const Path& file) override { return files_.removeFile(file); }
    FileResult<void> removeEmptyDirectory(const Path& folder) override {
        return files_.removeEmptyDirectory(folder);
    }
    FileResult<void> removeTree(const Path& folder) override { return files_.removeTree(folder); }
    FileResult<bool> holdsOthersItems(const Path& item, std::optional<std::uint32_t> ownerID) override {
        return files_.holdsOthersItems(item, ownerID);
    }
    FileResult<std::unique_ptr<FolderLock>> lock(const Path& folder) override { return files_.lock(folder); }

  private:
    const FileSystem& watched() const {
        if (calls_++ == call_ && what_) what_();
        return files_;
    }

    const FileSystem& noted(const Path& path) const {
        {
            const std::lock_guard lock(mutex_);
            reads_.insert(path);
        }
        return watched();
    }

    FileSystem& files_;
    mutable std::mutex mutex_; ///< guards `reads_`
    mutable std::multiset<Path> reads_;
    mutable std::atomic<std::size_t> calls_ = 0;
    std::size_t call_ = 0;
    std::function<void()> what_;
};

} // namespace tidwen::test
