#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace tidwen::test {

/// What becomes of the calls of a file system: they may wait for ever, or fail, and those of the thread that
/// made this, which draws the window, are noted.
class FileGovernor {
  public:
    void holdCalls() {
        set([this] { areHeld_ = true; });
    }
    void letCallsGo() {
        set([this] { areHeld_ = false; });
    }
    void failCalls(std::optional<FileFault> fault) {
        set([this, fault] { fault_ = fault; });
    }
    /// Calls that wait or failed so far.
    std::size_t stopped() const {
        const std::lock_guard lock(mutex_);
        return stopped_;
    }
    /// The places that the window's thread asked for, which must not wait for a disk.
    std::vector<std::string> ofWindow() const {
        const std::lock_guard lock(mutex_);
        return ofWindow_;
    }

    /// Before each call; the fault with which it ends, if any.
    std::optional<FileFault> pass(const Path& path) {
        std::unique_lock lock(mutex_);
        if (std::this_thread::get_id() == window_) {
            ofWindow_.push_back(path.string());
            return fault_;
        }
        if (areHeld_ || fault_) ++stopped_;
        changed_.wait(lock, [this] { return !areHeld_; });
        return fault_;
    }

  private:
    template<class Change>
    void set(const Change& change) {
        const std::lock_guard lock(mutex_);
        change();
        changed_.notify_all();
    }

    const std::thread::id window_ = std::this_thread::get_id();
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool areHeld_ = false;
    std::optional<FileFault> fault_;
    std::size_t stopped_ = 0;
    std::vector<std::string> ofWindow_;
};

/// Files whose every call asks a governor first.
class GovernedFiles final : public FileSystem {
  public:
    GovernedFiles(std::unique_ptr<FileSystem> files, std::shared_ptr<FileGovernor> governor)
        : files_(std::move(files)), governor_(std::move(governor)) {}

    FileResult<FileInfo> info(const Path& path) const override { return ask(path, &FileSystem::info, path); }
    FileResult<FileInfo> infoFollowingLinks(const Path& path) const override {
        return ask(path, &FileSystem::infoFollowingLinks, path);
    }
    FileResult<std::vector<DirectoryEntry>> list(const Path& path) const override {
        return ask(path, &FileSystem::list, path);
    }
    FileResult<std::string> read(const Path& path, std::size_t most) const override {
        return ask(path, &FileSystem::read, path, most);
    }
    FileResult<std::string> readRange(const Path& path, std::uint64_t from, std::size_t most) const override {
        return ask(path, &FileSystem::readRange, path, from, most);
    }
    FileResult<std::string> extendedAttribute(const Path& path, const std::string& name) const override {
        return ask(path, &FileSystem::extendedAttribute, path, name);
    }
    FileResult<Path> resolve(const Path& path) const override {
        return ask(path, &FileSystem::resolve, path);
    }
    FileResult<TreeSize> treeSize(const Path& path, std::uint64_t most,
                                  const StopToken& stop) const override {
        return ask(path, &FileSystem::treeSize, path, most, stop);
    }
    bool isMovable(const Path& path) const override {
        return !governor_->pass(path) && files_->isMovable(path);
    }

    FileResult<void> createDirectory(const Path& path) override {
        return ask(path, &FileSystem::createDirectory, path);
    }
    FileResult<void> createDirectories(const Path& path) override {
        return ask(path, &FileSystem::createDirectories, path);
    }
    MoveResult move(const Path& from, const Path& to) override {
        return ask(from, &FileSystem::move, from, to);
    }
    MoveResult settleInterruptedMove(const Path& from, const Path& to) override {
        return ask(from, &FileSystem::settleInterruptedMove, from, to);
    }
    bool isSetAside(const Path& path) const override {
        return !governor_->pass(path) && files_->isSetAside(path);
    }
    FileResult<std::vector<Path>> revealRemains(const Path& path) override {
        return ask(path, &FileSystem::revealRemains, path);
    }
    FileResult<void> replaceFile(const Path& path, std::string_view content, NewFileMode mode) override {
        return ask(path, &FileSystem::replaceFile, path, content, mode);
    }
    void dropUnfinishedReplacement(const Path& path) override {
        if (!governor_->pass(path)) files_->dropUnfinishedReplacement(path);
    }
    FileResult<void> removeFile(const Path& path) override {
        return ask(path, &FileSystem::removeFile, path);
    }
    FileResult<void> removeEmptyDirectory(const Path& path) override {
        return ask(path, &FileSystem::removeEmptyDirectory, path);
    }
    FileResult<void> removeTree(const Path& path) override {
        return ask(path, &FileSystem::removeTree, path);
    }
    FileResult<bool> holdsOthersItems(const Path& path, std::optional<std::uint32_t> owner) override {
        return ask(path, &FileSystem::holdsOthersItems, path, owner);
    }
    FileResult<std::unique_ptr<FolderLock>> lock(const Path& path) override {
        return ask(path, &FileSystem::lock, path);
    }

  private:
    template<class Call, class... Arguments>
    std::invoke_result_t<Call, FileSystem&, const Arguments&...> ask(const Path& path, Call call,
                                                                     const Arguments&... arguments) const {
        if (const auto fault = governor_->pass(path))
            return tl::unexpected(FileError{.fault = *fault, .path = path});
        return ((*files_).*call)(arguments...);
    }

    std::unique_ptr<FileSystem> files_;
    std::shared_ptr<FileGovernor> governor_;
};

} // namespace tidwen::test
