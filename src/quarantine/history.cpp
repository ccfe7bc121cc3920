#include "quarantine/history.h"

#include "platform/budgeted_files.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/run_items.h"
#include "scan/matching/residue_scanner.h"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <unordered_set>

namespace tidwen {

bool hasTrustworthyDate(const Manifest& manifest, Timestamp now) {
    using namespace std::chrono;
    constexpr Timestamp longBeforeTidwen = sys_days(year(2020) / January / 1);
    return longBeforeTidwen <= manifest.createdAt && manifest.createdAt <= now;
}

namespace {

/// Nothing when the budget of the run to which `files` belong is spent meanwhile.
std::optional<RemovalHistoryEntry> makeEntry(const Path& root, Manifest manifest, const FileSystem& files) {
    RemovalHistoryEntry entry{.root = root, .manifest = std::move(manifest)};
    const ReadBudget* budget = BudgetedFiles::budgetOf(files);
    for (const auto& step : entry.manifest.entries) {
        if (budget && budget->isExhausted()) {
            budget->leaveOut();
            return std::nullopt;
        }
        if (step.kind == ManifestEntryKind::bootout && step.plistPath && files.exists(Path(*step.plistPath)))
            ++entry.loadableJobs;
        if (step.kind != ManifestEntryKind::move) continue;
        ++entry.totalMoves;
        const auto place = placeOf(step, files);
        if (place == ItemPlace::inQuarantine) ++entry.pendingMoves;
        if (place == ItemPlace::missing) ++entry.missingMoves;
    }
    return entry;
}

/// What was put back and taken again is the later run's, and no loss of the earlier one. `entries`: newest
/// first.
void settleTakenAgain(std::vector<RemovalHistoryEntry>& entries, const BudgetedFiles& files) {
    const auto misses = [](const RemovalHistoryEntry& entry) { return entry.missingMoves > 0; };
    if (std::ranges::none_of(entries, misses)) return;
    std::unordered_set<std::string_view> takenLater;
    for (auto& entry : entries) {
        if (files.budget().isExhausted()) return;
        const auto& steps = entry.manifest.entries;
        if (misses(entry) && !takenLater.empty())
            for (const auto& step : steps)
                if (step.kind == ManifestEntryKind::move && takenLater.contains(step.source)
                    && !files.exists(Path(step.source))
                    && !(step.destination && files.exists(Path(*step.destination))))
                    --entry.missingMoves;
        for (const auto& step : steps)
            takenLater.insert(step.source);
    }
}

/// Nothing when the budget runs out meanwhile: what was not looked at would be taken for missing.
std::optional<UnfinishedRun> readUnfinished(const Path& root, const BudgetedFiles& files) {
    const bool hadBudget = !files.budget().isExhausted();
    auto run = readRunWithoutManifest(root, files);
    if (!run || !files.budget().isExhausted()) return run;
    if (hadBudget) files.budget().leaveOut();
    return std::nullopt;
}

} // namespace

RemovalHistoryEntry::Items RemovalHistoryEntry::items() const {
    if (totalMoves == 0) return Items::none;
    if (pendingMoves > 0) return Items::inQuarantine;
    return missingMoves > 0 ? Items::missing : Items::putBack;
}

std::optional<RemovalHistoryEntry> readHistoryEntry(const Path& root, const FileSystem& files) {
    auto manifest = readManifest(root, files);
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
    for (const auto& root : *folders) {
        const auto before = budgeted.budget().leftOut();
        if (auto manifest = readManifest(root, budgeted)) {
            if (auto entry = makeEntry(root, std::move(*manifest), budgeted))
                runs.entries.push_back(std::move(*entry));
        } else if (!manifest.error().isLeftOut) {
            if (auto run = readUnfinished(root, budgeted)) runs.unfinished.push_back(std::move(*run));
        }
        if (budgeted.budget().leftOut() > before) runs.leftOut.push_back(root);
    }
    if (includeSizes)
        for (auto& entry : runs.entries)
            if (const auto size = files.treeSize(entry.root, historySizeEntryLimit))
                entry.sizeBytes = static_cast<std::int64_t>(size->allocatedBytes);
    // Runs of one second go by name, so that the numbers people refer to stay the same.
    std::sort(runs.entries.begin(), runs.entries.end(), [](const auto& a, const auto& b) {
        return std::tie(a.manifest.createdAt, a.root) > std::tie(b.manifest.createdAt, b.root);
    });
    settleTakenAgain(runs.entries, budgeted);
    return runs;
}

std::vector<RemovalHistoryEntry> loadHistory(const UserEnvironment& user, const FileSystem& files,
                                             bool includeSizes, const ReadBudget& budget) {
    return loadPastRuns(user, files, includeSizes, budget).entries;
}

} // namespace tidwen
