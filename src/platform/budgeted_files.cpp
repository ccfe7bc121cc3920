#include "platform/budgeted_files.h"

#include "base/path.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

// Smaller lists are parsed faster than looked up, and their parsing needs no exact measure.
constexpr std::size_t smallestKept = 64u << 10;
// A parsed list takes many times the memory of its file.
constexpr std::size_t mostKept = 4;

} // namespace

BudgetedFiles::BudgetedFiles(const FileSystem& files, const ReadBudget& budget)
    : files_(files), budget_(files.budgeted() ? files.budgeted()->budget() : budget) {}

std::optional<FileError> BudgetedFiles::spent(const Path& path) const {
    if (!budget_.isExhausted()) return std::nullopt;
    budget_.leaveOut();
    return FileError{.fault = FileFault::exhausted, .path = path};
}

FileResult<std::vector<DirectoryEntry>> BudgetedFiles::list(const Path& folder) const {
    if (auto refusal = spent(folder)) return tl::unexpected(std::move(*refusal));
    const ReadBudget::Work work(budget_);
    return files_.list(folder);
}

FileResult<std::string> BudgetedFiles::read(const Path& file, std::size_t maxBytes) const {
    if (auto refusal = spent(file)) return tl::unexpected(std::move(*refusal));
    const ReadBudget::Work work(budget_);
    auto content = files_.read(file, maxBytes);
    if (content) budget_.spendBytes(content->size());
    return content;
}

FileResult<std::string> BudgetedFiles::readRange(const Path& file, std::uint64_t offset,
                                                 std::size_t length) const {
    if (auto refusal = spent(file)) return tl::unexpected(std::move(*refusal));
    const ReadBudget::Work work(budget_);
    auto content = files_.readRange(file, offset, length);
    if (content) budget_.spendBytes(content->size());
    return content;
}

std::optional<BudgetedFiles::ParsedKey> BudgetedFiles::keyOf(const Path& file,
                                                             const PropertyListLimits& limits) const {
    const auto info = infoFollowingLinks(file);
    if (!info || info->size < smallestKept) return std::nullopt;
    return ParsedKey{info->device, info->inode, info->modifiedNanoseconds, info->size, limits.bytes,
                     limits.nodes, limits.depth};
}

std::optional<BudgetedFiles::Parsed> BudgetedFiles::known(const Path& file,
                                                          const PropertyListLimits& limits) const {
    {
        const std::lock_guard lock(mutex_);
        if (parsed_.empty()) return std::nullopt; // as on most volumes: there is nothing to look up
    }
    const auto key = keyOf(file, limits);
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(parsed_.begin(), parsed_.end(),
                                    [&](const Parsed& parsed) { return key && parsed.key == *key; });
    return found == parsed_.end() ? std::nullopt : std::optional(*found);
}

std::shared_ptr<const PropertyListValue> BudgetedFiles::propertyList(const Path& file,
                                                                     const PropertyListLimits& limits) const {
    if (const auto parsed = known(file, limits)) return parsed->value;
    if (spent(file)) return nullptr;
    FileResult<std::string> bytes;
    std::shared_ptr<const PropertyListValue> value;
    {
        const ReadBudget::Work work(budget_);
        bytes = files_.read(file, limits.bytes);
    }
    if (!bytes) return nullptr;
    budget_.spendBytes(bytes->size());
    {
        using enum ReadBudget::Measure;
        const ReadBudget::Work work(budget_, bytes->size() < smallestKept ? cheaply : exactly);
        if (auto parsed = parsePropertyList(*bytes, limits))
            value = std::make_shared<const PropertyListValue>(std::move(*parsed));
    }
    if (bytes->size() < smallestKept) return value;
    if (const auto key = keyOf(file, limits)) {
        const std::lock_guard lock(mutex_);
        parsed_.push_back({*key, value});
        if (parsed_.size() > mostKept) parsed_.pop_front();
    }
    return value;
}

} // namespace tidwen
