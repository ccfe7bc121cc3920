#pragma once

#include "base/path.h"
#include "base/property_list.h"
#include "platform/budgeted_files.h"
#include "platform/budgeted_sources.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "platform/read_budget.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace tidwen {

/// The files and folders that an answer was read from and their state at the time, to check later whether the
/// answer is still valid. Single thread only.
class ReadTrail {
  public:
    /// With `notes` false it stays empty.
    explicit ReadTrail(bool notes);

    /// Records the state of the path's target; call it before reading. The first state counts.
    void note(const FileSystem& files, const Path& path);
    /// The same for a caller that has just looked at the target.
    void note(const Path& path, const FileResult<FileInfo>& target);
    /// Nothing recorded has changed since, and nothing was modified so recently then that a change could go
    /// unnoticed.
    bool isUnchanged(const FileSystem& files) const;
    std::size_t size() const { return states_.size(); }

  private:
    /// Device, inode, size, modification, date added; all zero for a missing item.
    using State =
        std::tuple<std::uint64_t, std::uint64_t, std::uint64_t, std::int64_t, std::optional<std::int64_t>>;
    static State stateOf(const FileResult<FileInfo>& target);

    bool notes_;
    std::int64_t newestTrusted_; ///< modification time, nanoseconds since 1970
    std::map<Path, State> states_;
};

/// The files of a run; records every access in a trail.
class TrailedFiles : public BudgetedFiles {
  public:
    TrailedFiles(const FileSystem& files, const ReadBudget& budget, ReadTrail& trail)
        : BudgetedFiles(files, budget), files_(files), trail_(trail) {}

    FileResult<std::vector<DirectoryEntry>> list(const Path& folder) const override {
        return noted(folder), BudgetedFiles::list(folder);
    }
    FileResult<std::string> read(const Path& file, std::size_t maxBytes) const override {
        return noted(file), BudgetedFiles::read(file, maxBytes);
    }
    FileResult<std::string> readRange(const Path& file, std::uint64_t offset,
                                      std::size_t length) const override {
        return noted(file), BudgetedFiles::readRange(file, offset, length);
    }
    std::shared_ptr<const PropertyListValue> propertyList(const Path& file,
                                                          const PropertyListLimits& limits) const override {
        return noted(file), BudgetedFiles::propertyList(file, limits);
    }
    FileResult<FileInfo> info(const Path& path) const override {
        return noted(path), BudgetedFiles::info(path);
    }
    FileResult<FileInfo> infoFollowingLinks(const Path& path) const override {
        auto target = BudgetedFiles::infoFollowingLinks(path);
        trail_.note(path, target);
        return target;
    }
    FileResult<Path> resolve(const Path& path) const override {
        return noted(path), BudgetedFiles::resolve(path);
    }
    std::vector<bool> existing(const Path& folder, const std::vector<std::string>& items) const override {
        for (const auto& item : items)
            noted(folder / item);
        return BudgetedFiles::existing(folder, items);
    }

  private:
    void noted(const Path& path) const { trail_.note(files_, path); }

    const FileSystem& files_;
    ReadTrail& trail_;
};

/// The same for signatures, with the files that contain them.
class TrailedSignatures : public CodeSignatures {
  public:
    TrailedSignatures(const CodeSignatures& signatures, const FileSystem& files, ReadTrail& trail)
        : signatures_(signatures), files_(files), trail_(trail) {}

    CodeSignature read(const Path& bundle, const Path& executable) const override {
        trail_.note(files_, executable);
        trail_.note(files_, bundle / "Contents/_CodeSignature/CodeDirectory");
        trail_.note(files_, bundle / "Contents/_CodeSignature/CodeEntitlements");
        return signatures_.read(bundle, executable);
    }

  private:
    const CodeSignatures& signatures_;
    const FileSystem& files_;
    ReadTrail& trail_;
};

} // namespace tidwen
