#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "posix/tree_ownership.h"
#include "posix/tree_removal.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The files of a Mac volume in a folder of this machine (or, with "/" as the folder, of this machine
/// itself). Every path is resolved inside that folder by the kernel (openat2 with RESOLVE_IN_ROOT) or, where
/// the kernel or a sandbox does not offer it, by an equivalent walk component by component.
class RootedFileSystem : public FileSystem {
  public:
    enum class Resolver { automatic, kernel, walk };

    /// Opens the root folder and holds it open. Fails when it is not a readable folder.
    static FileResult<std::unique_ptr<RootedFileSystem>> open(const std::filesystem::path& root,
                                                              Resolver resolver = Resolver::automatic);
    ~RootedFileSystem() override;

    Resolver resolver() const; ///< the one in use; never `automatic`

    /// From now on whatever is created inside this folder belongs to its owner and group, whoever runs the
    /// program; otherwise root would leave folders that the user cannot open. Folders created elsewhere are
    /// readable by everyone (0755). Call it before other threads use this object.
    FileResult<void> setHome(const Path& home);

    FileResult<FileInfo> info(const Path& path) const override;
    FileResult<FileInfo> infoFollowingLinks(const Path& path) const override;
    FileResult<std::vector<DirectoryEntry>> list(const Path& folder) const override;
    FileResult<std::string> read(const Path& file, std::size_t maxBytes) const override;
    FileResult<std::string> readRange(const Path& file, std::uint64_t offset,
                                      std::size_t length) const override;
    FileResult<std::string> extendedAttribute(const Path& path, const std::string& name) const override;
    FileResult<Path> resolve(const Path& path) const override;
    FileResult<TreeSize> treeSize(const Path& path, std::uint64_t entryLimit,
                                  const StopToken& stop = {}) const override;
    bool isMovable(const Path& path) const override;
    std::vector<bool> existing(const Path& folder, const std::vector<std::string>& items) const override;
    FileResult<void> createDirectory(const Path& folder) override;
    FileResult<void> createDirectories(const Path& folder) override;
    MoveResult move(const Path& from, const Path& to) override;
    MoveResult settleInterruptedMove(const Path& from, const Path& to) override;
    bool isSetAside(const Path& from) const override;
    FileResult<std::vector<Path>> revealRemains(const Path& from) override;
    FileResult<void> replaceFile(const Path& file, std::string_view content, NewFileMode mode) override;
    void dropUnfinishedReplacement(const Path& file) override;
    FileResult<void> removeFile(const Path& file) override;
    FileResult<void> removeEmptyDirectory(const Path& folder) override;
    FileResult<void> removeTree(const Path& folder) override;
    FileResult<bool> holdsOthersItems(const Path& item, std::optional<std::uint32_t> ownerID) override;
    FileResult<std::unique_ptr<FolderLock>> lock(const Path& folder) override;

  private:
    class Impl;
    explicit RootedFileSystem(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

} // namespace tidwen
