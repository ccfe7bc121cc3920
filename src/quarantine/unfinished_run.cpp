#include "quarantine/unfinished_run.h"

#include "base/path.h"
#include "platform/file_system.h"
#include "quarantine/interrupted_move.h"
#include "quarantine/quarantine_layout.h"

#include <array>

namespace tidwen {

namespace {

using RunProblem = UnfinishedRun::Problem;

UnfinishedRun fromJournal(const Path& root, RemovalJournal journal, const FileSystem& files) {
    auto seen = observe(journal.planned, files);
    UnfinishedRun run{.root = root,
                      .problem = seen.unsettled.empty() ? RunProblem::interrupted : RunProblem::unsettled,
                      .known = Manifest{.createdAt = journal.createdAt,
                                        .quarantineRoot = root,
                                        .apps = std::move(journal.apps),
                                        .entries = std::move(seen.entries)}};
    auto& known = run.known->entries;
    known.insert(known.end(), seen.missing.begin(), seen.missing.end());
    for (auto& entry : seen.unsettled)
        run.unsettled.push_back(std::move(entry.source));
    return run;
}

UnfinishedRun unreadable(const Path& root, RunProblem problem, const DocumentError& error,
                         const FileSystem& files) {
    return {.root = root,
            .problem = problem,
            .recordOf = error.otherRoot,
            .isCopy = error.otherRoot && files.exists(*error.otherRoot)};
}

} // namespace

std::string_view name(RunProblem problem) {
    static constexpr std::array<std::string_view, 4> names = {"interrupted", "unsettled", "unreadableJournal",
                                                              "unreadableManifest"};
    return names[static_cast<std::size_t>(problem)];
}

Message UnfinishedRun::advice() const {
    if (recordOf)
        return {isCopy ? "history.unfinished.copied %@" : "history.unfinished.renamed %@",
                {recordOf->string()}};
    return {"history.unfinished." + std::string(name(problem)), {}};
}

Message UnfinishedRun::whyNoUndo() const {
    return {"history.undo.unreadable %@ %@", {root.lastComponent(), advice()}};
}

std::optional<UnfinishedRun> readUnfinishedRun(const Path& root, const FileSystem& files) {
    if (readManifest(root, files)) return std::nullopt;
    return readRunWithoutManifest(root, files);
}

std::optional<UnfinishedRun> readRunWithoutManifest(const Path& root, const FileSystem& files) {
    auto journal = readJournal(root, files);
    if (journal) return fromJournal(root, std::move(*journal), files);
    if (files.exists(root / manifestFileName))
        if (const auto manifest = readManifest(root, files); !manifest)
            return unreadable(root, RunProblem::unreadableManifest, manifest.error(), files);
    if (!files.exists(root / journalFileName)) return std::nullopt;
    return unreadable(root, RunProblem::unreadableJournal, journal.error(), files);
}

} // namespace tidwen
