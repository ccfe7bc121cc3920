#include "quarantine/run_documents.h"

#include "base/path.h"
#include "platform/file_system.h"
#include "quarantine/quarantine_layout.h"

#include <algorithm>
#include <string>

namespace tidwen {

namespace {

/// The manifest's own text, because other content could be compressed better than it, and a little more for
/// the date that recovery adds and for rounding by the disk.
std::string reserveFor(const RemovalJournal& journal) {
    constexpr std::size_t margin = 16u << 10;
    const auto text = encode(Manifest{.createdAt = journal.createdAt,
                                      .quarantineRoot = journal.quarantineRoot,
                                      .apps = journal.apps,
                                      .entries = journal.planned});
    std::string reserve = text;
    while (reserve.size() < text.size() + margin)
        reserve.append(text, 0, text.size() + margin - reserve.size());
    return reserve;
}

} // namespace

FileResult<void> beginRun(const RemovalJournal& journal, FileSystem& files) {
    const Path& root = journal.quarantineRoot;
    if (auto written = writeJournal(journal, root / journalFileName, files); !written) return written;
    auto held = files.replaceFile(root / reserveFileName, reserveFor(journal), NewFileMode::privateToOwner);
    if (!held) (void)files.removeFile(root / journalFileName);
    return held;
}

FileResult<void> finishRun(const Manifest& manifest, FileSystem& files) {
    const Path& root = manifest.quarantineRoot;
    auto written = writeManifest(manifest, root / manifestFileName, files);
    if (!written && written.error().fault == FileFault::noSpace && files.removeFile(root / reserveFileName))
        written = writeManifest(manifest, root / manifestFileName, files);
    if (!written) return written;
    // With a manifest neither is read again, so failures are harmless.
    (void)files.removeFile(root / reserveFileName);
    (void)files.removeFile(root / journalFileName);
    return {};
}

void dropUnfinishedDocuments(const Path& root, FileSystem& files) {
    for (const auto* name : {manifestFileName, journalFileName, reserveFileName})
        files.dropUnfinishedReplacement(root / name);
    if (!files.exists(root / journalFileName)) (void)files.removeFile(root / reserveFileName);
}

bool dropEmptyRun(const Path& root, FileSystem& files) {
    if (!hasRunName(root)) return false;
    const auto entries = files.list(root);
    const auto isRest = [](const DirectoryEntry& entry) {
        return isRunDocument(entry.name) && entry.name != manifestFileName && entry.name != journalFileName;
    };
    if (!entries || !std::ranges::all_of(*entries, isRest)) return false;
    dropUnfinishedDocuments(root, files);
    return files.removeEmptyDirectory(root).has_value();
}

} // namespace tidwen
