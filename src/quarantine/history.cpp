#include "quarantine/history.h"

#include "base/parallel.h"
#include "base/path.h"
#include "base/timestamp.h"
#include "platform/budgeted_files.h"
#include "platform/file_system.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/run_items.h"
#include "scan/matching/residue_scanner.h"
#include "scan/matching/size_measurer.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <ranges>
#include <string_view>
#include <tuple>
#include <unordered_set>
#include <utility>

namespace tidwen {

bool hasTrustworthyDate(const Manifest& manifest, Timestamp now) {
    using namespace std::chrono;
    constexpr Timestamp longBeforeTidwen = sys_days(year(2020) / January / 1);
    return longBeforeTidwen <= manifest.createdAt && manifest.createdAt <= now;
}

namespace {

/// nullopt if the budget of `files` runs out meanwhile.
std::optional<RemovalHistoryEntry> makeEntry(const Path& root, ManifestInPlace read,
                                             const FileSystem& files) {
    RemovalHistoryEntry entry{.root = root, .manifest = std::move(read.manifest)};
    const ReadBudget* budget = BudgetedFiles::budgetOf(files);
    for (std::size_t i = 0; i < entry.manifest.entries.size(); ++i) {
        const auto& step = entry.manifest.entries[i];
        if (budget && budget->isExhausted()) {
            budget->leaveOut();
            return std::nullopt;
        }
        if (step.kind == ManifestEntryKind::bootout && step.plistPath && files.exists(Path(*step.plistPath)))
            ++entry.loadableJobs;
        if (step.kind != ManifestEntryKind::move) continue;
        ++entry.totalMoves;
        const auto place = placeOf(step, read.isThere[i], files);
        if (place == ItemPlace::inQuarantine) {
            ++entry.pendingMoves;
            entry.pendingItems.insert(step.source);
        }
        if (place == ItemPlace::missing) {
            ++entry.missingMoves;
            entry.missingItems.insert(step.source);
        }
        if (place != ItemPlace::inQuarantine && step.destination && !entry.isPartlyPurged)
            entry.isPartlyPurged = isPartlyPurged(Path(*step.destination), root, files);
    }
    return entry;
}

using Places = std::unordered_set<std::string_view>;

/// The journals of interrupted runs, newest first; they hold what they moved as manifests do.
std::vector<const UnfinishedRun*> journalsOf(const std::vector<UnfinishedRun>& unfinished) {
    std::vector<const UnfinishedRun*> journals;
    journals.reserve(unfinished.size());
    for (const auto& run : unfinished)
        if (run.known) journals.push_back(&run);
    std::ranges::sort(journals, std::greater{}, [](const auto* run) { return run->known->createdAt; });
    return journals;
}

void addMoved(const UnfinishedRun& run, Places& places) {
    for (const auto& step : run.known->entries)
        places.insert(step.source);
    places.insert(run.unsettled.begin(), run.unsettled.end());
}

/// An item put back and moved again belongs to the later run and is not missing from the earlier one.
/// `entries`: newest first.
void settleTakenAgain(std::vector<RemovalHistoryEntry>& entries, const std::vector<UnfinishedRun>& unfinished,
                      const BudgetedFiles& files) {
    const auto misses = [](const RemovalHistoryEntry& entry) { return entry.missingMoves > 0; };
    if (std::ranges::none_of(entries, misses)) return;
    const auto journals = journalsOf(unfinished);
    auto journal = journals.begin();
    Places takenLater;
    for (auto& entry : entries) {
        if (files.budget().isExhausted()) return;
        for (; journal != journals.end() && (*journal)->known->createdAt >= entry.manifest.createdAt;
             ++journal)
            addMoved(**journal, takenLater);
        const auto& steps = entry.manifest.entries;
        if (misses(entry) && !takenLater.empty())
            for (const auto& step : steps)
                if (step.kind == ManifestEntryKind::move && takenLater.contains(step.source)
                    && placeOf(step, files) == ItemPlace::missing) {
                    --entry.missingMoves;
                    entry.missingItems.erase(step.source);
                    entry.takenAgain.insert(step.source);
                }
        for (const auto& step : steps)
            takenLater.insert(step.source);
    }
}

/// nullopt if the budget runs out meanwhile: items not looked at would appear missing.
std::optional<UnfinishedRun> readUnfinished(const Path& root, const BudgetedFiles& files) {
    const bool hadBudget = !files.budget().isExhausted();
    auto run = readRunWithoutManifest(root, files);
    if (!run || !files.budget().isExhausted()) return run;
    if (hadBudget) files.budget().leaveOut();
    return std::nullopt;
}

/// The content of one quarantine folder; both are empty when it is no run or was not read.
struct ReadRun {
    std::optional<RemovalHistoryEntry> entry;
    std::optional<UnfinishedRun> unfinished;
    bool isLeftOut = false;
};

ReadRun readRun(const Path& root, const BudgetedFiles& files) {
    ReadRun run;
    if (auto manifest = readManifestInPlace(root, files))
        run.entry = makeEntry(root, std::move(*manifest), files);
    else if (!manifest.error().isLeftOut)
        run.unfinished = readUnfinished(root, files);
    run.isLeftOut = !run.entry && !run.unfinished && files.budget().isExhausted();
    return run;
}

/// By folder. Many are read in parallel; for a few, starting threads takes longer.
std::vector<ReadRun> readRuns(const std::vector<Path>& folders, const BudgetedFiles& files) {
    constexpr std::size_t few = 32;
    std::vector<ReadRun> runs(folders.size());
    parallelFor(
        folders.size(), [&](std::size_t i) { runs[i] = readRun(folders[i], files); },
        folders.size() < few ? 1 : 0);
    return runs;
}

/// Dates have a resolution of one second. Runs of the same second are ordered by when their document was
/// written, then by name, so that the numbers users refer to are stable.
void sortNewestFirst(std::vector<RemovalHistoryEntry>& entries, const FileSystem& files) {
    std::ranges::sort(entries, [](const auto& a, const auto& b) {
        return std::tie(a.manifest.createdAt, a.root) > std::tie(b.manifest.createdAt, b.root);
    });
    const auto written = [&](const RemovalHistoryEntry& entry) {
        const auto info = files.info(entry.root / manifestFileName);
        return info ? info->modifiedNanoseconds : 0;
    };
    for (auto begin = entries.begin(); begin != entries.end();) {
        const auto end = std::find_if(begin, entries.end(), [&](const auto& entry) {
            return entry.manifest.createdAt != begin->manifest.createdAt;
        });
        if (end - begin > 1) {
            std::vector<std::pair<std::int64_t, RemovalHistoryEntry>> ofOneSecond;
            for (auto& entry : std::ranges::subrange(begin, end)) {
                const auto time = written(entry);
                ofOneSecond.emplace_back(time, std::move(entry));
            }
            std::ranges::stable_sort(ofOneSecond, std::greater{}, &decltype(ofOneSecond)::value_type::first);
            std::ranges::transform(ofOneSecond, begin, [](auto& each) { return std::move(each.second); });
        }
        begin = end;
    }
}

} // namespace

RemovalHistoryEntry::Items RemovalHistoryEntry::items() const {
    if (totalMoves == 0) return Items::none;
    if (pendingMoves > 0) return Items::inQuarantine;
    return missingMoves > 0 ? Items::missing : Items::putBack;
}

std::optional<RemovalHistoryEntry> readHistoryEntry(const Path& root, const FileSystem& files) {
    auto manifest = readManifestInPlace(root, files);
    if (!manifest) return std::nullopt;
    return makeEntry(root, std::move(*manifest), files);
}

PastRuns loadPastRuns(const UserEnvironment& user, const FileSystem& files, bool includeSizes,
                      const ReadBudget& budget) {
    const BudgetedFiles budgeted(files, budget);
    PastRuns runs;
    const auto folders = listQuarantineFolders(user, files);
    if (!folders) {
        runs.unreadable = folders.error();
        return runs;
    }
    auto read = readRuns(*folders, budgeted);
    for (std::size_t i = 0; i < read.size(); ++i) {
        if (read[i].entry) runs.entries.push_back(std::move(*read[i].entry));
        if (read[i].unfinished) runs.unfinished.push_back(std::move(*read[i].unfinished));
        if (read[i].isLeftOut) runs.leftOut.push_back((*folders)[i]);
    }
    if (includeSizes)
        for (auto& entry : runs.entries)
            if (const auto size = files.treeSize(entry.root, historySizeEntryLimit)) {
                entry.sizeBytes = static_cast<std::int64_t>(size->allocatedBytes);
                entry.isSizePartial = size->capped;
            }
    sortNewestFirst(runs.entries, files);
    settleTakenAgain(runs.entries, runs.unfinished, budgeted);
    return runs;
}

std::vector<RemovalHistoryEntry> loadHistory(const UserEnvironment& user, const FileSystem& files,
                                             bool includeSizes, const ReadBudget& budget) {
    return loadPastRuns(user, files, includeSizes, budget).entries;
}

} // namespace tidwen
