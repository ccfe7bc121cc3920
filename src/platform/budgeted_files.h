#pragma once

#include "base/path.h"
#include "base/property_list.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "platform/read_budget.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <tuple>
#include <vector>

namespace tidwen {

/// A Mac's file system for one run of a reader, with a budget for reading: once it is exhausted, reading and
/// listing fail with `FileFault::exhausted`; other queries still work. The reader does not see the budget;
/// its caller asks the budget afterwards how much was left out. Every change is refused.
class BudgetedFiles : public FileSystem {
  public:
    /// Inside another run, uses that run's budget.
    explicit BudgetedFiles(const FileSystem& files, const ReadBudget& budget = {});

    const ReadBudget& budget() const { return budget_; }
    /// The budget of the run to which the files belong; null without one.
    static const ReadBudget* budgetOf(const FileSystem& files) {
        return files.budgeted() ? &files.budgeted()->budget() : nullptr;
    }
    static bool isSpent(const FileSystem& files) {
        const auto* budget = budgetOf(files);
        return budget && budget->isExhausted();
    }
    const BudgetedFiles* budgeted() const override { return this; }

    /// As `readPropertyList`. A large list that is reached through many links or names is parsed once.
    virtual std::shared_ptr<const PropertyListValue> propertyList(const Path& file,
                                                                  const PropertyListLimits& limits) const;

    FileResult<std::vector<DirectoryEntry>> list(const Path& folder) const override;
    FileResult<std::string> read(const Path& file, std::size_t maxBytes) const override;
    FileResult<std::string> readRange(const Path& file, std::uint64_t offset,
                                      std::size_t length) const override;

    FileResult<FileInfo> info(const Path& path) const override {
        const ReadBudget::Work work(budget_);
        return files_.info(path);
    }
    FileResult<FileInfo> infoFollowingLinks(const Path& path) const override {
        const ReadBudget::Work work(budget_);
        return files_.infoFollowingLinks(path);
    }
    FileResult<std::string> extendedAttribute(const Path& path, const std::string& name) const override {
        return files_.extendedAttribute(path, name);
    }
    FileResult<Path> resolve(const Path& path) const override {
        const ReadBudget::Work work(budget_);
        return files_.resolve(path);
    }
    FileResult<TreeSize> treeSize(const Path& path, std::uint64_t entryLimit,
                                  const StopToken& stop = {}) const override {
        return files_.treeSize(path, entryLimit, stop);
    }
    bool isMovable(const Path& path) const override { return files_.isMovable(path); }
    std::vector<bool> existing(const Path& folder, const std::vector<std::string>& items) const override {
        const ReadBudget::Work work(budget_, ReadBudget::Measure::exactly);
        return files_.existing(folder, items);
    }
    bool isSetAside(const Path& from) const override {
        const ReadBudget::Work work(budget_);
        return files_.isSetAside(from);
    }

    FileResult<void> createDirectory(const Path& folder) override { return refused(folder); }
    FileResult<void> createDirectories(const Path& folder) override { return refused(folder); }
    MoveResult move(const Path& from, const Path&) override { return refused(from); }
    MoveResult settleInterruptedMove(const Path& from, const Path&) override { return refused(from); }
    FileResult<std::vector<Path>> revealRemains(const Path& from) override { return refused(from); }
    FileResult<void> replaceFile(const Path& file, std::string_view, NewFileMode) override {
        return refused(file);
    }
    void dropUnfinishedReplacement(const Path&) override {}
    FileResult<void> removeFile(const Path& file) override { return refused(file); }
    FileResult<void> removeEmptyDirectory(const Path& folder) override { return refused(folder); }
    FileResult<void> removeTree(const Path& folder) override { return refused(folder); }
    FileResult<bool> holdsOthersItems(const Path& item, std::optional<std::uint32_t>) override {
        return refused(item);
    }
    FileResult<std::unique_ptr<FolderLock>> lock(const Path& folder) override { return refused(folder); }

  private:
    /// One state of one file and the limits used for parsing it.
    using ParsedKey = std::tuple<std::uint64_t, std::uint64_t, std::int64_t, std::uint64_t, std::size_t,
                                 std::size_t, std::size_t>;
    struct Parsed {
        ParsedKey key;
        std::shared_ptr<const PropertyListValue> value; ///< null when malformed
    };

    static tl::unexpected<FileError> refused(const Path& path) {
        return tl::unexpected(FileError{.fault = FileFault::notSupported, .path = path});
    }
    std::optional<FileError> spent(const Path& path) const;
    std::optional<ParsedKey> keyOf(const Path& file, const PropertyListLimits& limits) const;
    std::optional<Parsed> known(const Path& file, const PropertyListLimits& limits) const;

    const FileSystem& files_;
    ReadBudget budget_;
    mutable std::mutex mutex_; ///< guards `parsed_`
    mutable std::deque<Parsed> parsed_;
};

} // namespace tidwen
