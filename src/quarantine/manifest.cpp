#include "quarantine/manifest.h"

#include "base/path_key.h"
#include "base/uuid.h"
#include "operations/removal_operation.h"
#include "platform/budgeted_files.h"
#include "platform/read_budget.h"
#include "posix/folder_listing.h"
#include "quarantine/item_names.h"
#include "quarantine/quarantine_layout.h"

#include <algorithm>
#include <map>
#include <span>
#include <unordered_set>
#include <variant>

namespace tidwen {

namespace {

/// The source of the move with the same trace: the path of the job's property list.
std::map<Uuid, std::string> firstMovedPathByTrace(const std::vector<RemovalOperation>& operations) {
    std::map<Uuid, std::string> sources;
    for (const auto& each : operations)
        if (const auto* move = std::get_if<operation::Move>(&each.kind))
            sources.emplace(each.traceID, move->source.string());
    return sources;
}

ManifestEntry moveEntry(const RemovalOperation& from, const operation::Move& move) {
    return {.operationID = from.id,
            .kind = ManifestEntryKind::move,
            .source = move.source.string(),
            .destination = move.destination.string(),
            .requiresRoot = from.requiresRoot,
            .bundleID = from.bundleID,
            .sharedWith = from.sharedWith};
}

ManifestEntry bootoutEntry(const RemovalOperation& from, const operation::Bootout& bootout) {
    return {.operationID = from.id,
            .kind = ManifestEntryKind::bootout,
            .source = bootout.label,
            .launchLabel = bootout.label,
            .isSystemDomain = bootout.isSystemDomain,
            .requiresRoot = from.requiresRoot,
            .bundleID = from.bundleID};
}

template<class Wanted>
std::vector<ManifestEntry> entriesOf(const std::vector<RemovalOperation>& operations, Wanted wanted) {
    const auto movedPaths = firstMovedPathByTrace(operations);
    std::vector<ManifestEntry> entries;
    for (const auto& each : operations) {
        if (!wanted(each)) continue;
        if (const auto* move = std::get_if<operation::Move>(&each.kind)) {
            entries.push_back(moveEntry(each, *move));
        } else if (const auto* bootout = std::get_if<operation::Bootout>(&each.kind)) {
            entries.push_back(bootoutEntry(each, *bootout));
            if (const auto moved = movedPaths.find(each.traceID); moved != movedPaths.end())
                entries.back().plistPath = moved->second;
        }
    }
    return entries;
}

FileResult<void> writeDocument(const std::string& text, const Path& file, FileSystem& files) {
    if (auto folder = files.createDirectories(file.parent()); !folder) return folder;
    return files.replaceFile(file, text, NewFileMode::privateToOwner);
}

DocumentError fileError(const FileError& error) {
    return {DocumentError::Kind::file, std::string(failureKey(error.fault)),
            error.fault == FileFault::exhausted};
}

tl::expected<std::string, DocumentError> readDocument(const Path& file, const FileSystem& files) {
    const auto info = files.info(file);
    if (!info) return tl::unexpected(fileError(info.error()));
    // Reading follows links; a link could present another file as the document.
    if (info->kind != FileKind::regular)
        return tl::unexpected(DocumentError{DocumentError::Kind::file, "not a plain file"});
    auto content = files.read(file, maxDocumentBytes);
    if (!content) return tl::unexpected(fileError(content.error()));
    return std::move(*content);
}

std::vector<ManifestEntry>& entriesOf(Manifest& manifest) {
    return manifest.entries;
}
std::vector<ManifestEntry>& entriesOf(RemovalJournal& journal) {
    return journal.planned;
}

/// The path below `from` (which it may spell differently) as a path below `to`.
Path rebased(const Path& item, const Path& from, const Path& to) {
    if (from == to && item.isWithin(to)) return item; // the usual case
    const auto components = item.components();
    Path result = to;
    for (auto i = from.components().size(); i < components.size(); ++i)
        result = result / components[i];
    return result;
}

/// The number of items between two checks of the budget.
constexpr std::size_t looksAtOnce = 256;

/// Sets the destinations to the current paths of the items in the folder `root`, which the document calls
/// `from`, and adds for each entry whether the item exists.
void locate(std::span<ManifestEntry> entries, const Path& from, const Path& root, const FileSystem& files,
            ItemNames& names, std::vector<bool>& areThere) {
    std::vector<Path> places;
    std::vector<std::string> items; // paths relative to the folder
    for (const auto& entry : entries)
        if (entry.destination) {
            const auto& place = places.emplace_back(rebased(Path(*entry.destination), from, root));
            items.push_back(place.string().substr(root.string().size() + 1));
        }
    const auto found = files.existing(root, items);
    std::size_t i = 0;
    for (auto& entry : entries) {
        areThere.push_back(false);
        if (!entry.destination) continue;
        areThere.back() = found[i];
        if (!found[i]) {
            auto other = names.find(root, places[i]);
            areThere.back() = other.isThere;
            places[i] = std::move(other.place);
        }
        entry.destination = places[i++].string();
    }
}

/// A document with current paths, and whether each entry's item exists.
template<class Document>
struct InPlace {
    Document document;
    std::vector<bool> isThere;
};

/// A disk may list names with decomposed accents or in another case; items are then found by their names on
/// disk.
template<class Document>
tl::expected<InPlace<Document>, DocumentError> asItLies(Document document, const Path& root,
                                                        const FileSystem& files) {
    if (document.quarantineRoot != root && pathKey(document.quarantineRoot) != pathKey(root))
        return tl::unexpected(DocumentError{.detail = "quarantineRoot names another folder",
                                            .otherRoot = document.quarantineRoot});
    ItemNames names(files);
    const ReadBudget* budget = BudgetedFiles::budgetOf(files);
    std::vector<bool> areThere;
    std::span rest(entriesOf(document));
    while (!rest.empty()) {
        if (budget && budget->isExhausted()) {
            budget->leaveOut();
            return tl::unexpected(fileError({.fault = FileFault::exhausted, .path = root}));
        }
        const auto next = rest.first(std::min(rest.size(), looksAtOnce));
        locate(next, document.quarantineRoot, root, files, names, areThere);
        rest = rest.subspan(next.size());
    }
    document.quarantineRoot = root;
    return InPlace<Document>{std::move(document), std::move(areThere)};
}

/// Reads a document of the quarantine folder `root`.
template<class Document>
tl::expected<InPlace<Document>, DocumentError>
readIn(const Path& root, const char* fileName,
       tl::expected<Document, DocumentError> (*decode)(std::string_view), const FileSystem& files) {
    const auto text = readDocument(root / fileName, files);
    if (!text) return tl::unexpected(text.error());
    auto document = [&] {
        const ReadBudget::Work work(BudgetedFiles::budgetOf(files), ReadBudget::Measure::exactly);
        return decode(*text);
    }();
    if (!document) return tl::unexpected(std::move(document.error()));
    return asItLies(std::move(*document), root, files);
}

} // namespace

std::vector<ManifestEntry> manifestEntries(const std::vector<RemovalOperation>& operations) {
    return entriesOf(operations, [](const RemovalOperation&) { return true; });
}

std::vector<ManifestEntry> manifestEntries(const std::vector<RemovalOperation>& operations,
                                           const std::vector<OperationResult>& results) {
    std::unordered_set<int> succeeded;
    for (const auto& result : results)
        if (result.succeeded) succeeded.insert(result.operationID);
    return entriesOf(operations, [&](const RemovalOperation& each) { return succeeded.contains(each.id); });
}

FileResult<void> writeManifest(const Manifest& manifest, const Path& file, FileSystem& files) {
    return writeDocument(encode(manifest), file, files);
}

FileResult<void> writeJournal(const RemovalJournal& journal, const Path& file, FileSystem& files) {
    const auto refused = [&](FileFault fault) {
        return tl::unexpected(FileError{.fault = fault, .path = file});
    };
    if (journal.planned.size() > maxManifestEntries) return refused(FileFault::tooLarge);
    const auto text = encode(journal);
    if (text.size() > maxDocumentBytes) return refused(FileFault::tooLarge);
    // A journal that reads back differently (a path that is not UTF-8) could not restore the items, so
    // nothing is moved.
    const auto readBack = decodeJournal(text);
    if (!readBack || readBack->planned != journal.planned
        || readBack->quarantineRoot != journal.quarantineRoot)
        return refused(FileFault::notSupported);
    return writeDocument(text, file, files);
}

tl::expected<Manifest, DocumentError> readManifest(const Path& root, const FileSystem& files) {
    return readIn(root, manifestFileName, decodeManifest, files).map([](auto read) {
        return std::move(read.document);
    });
}

tl::expected<ManifestInPlace, DocumentError> readManifestInPlace(const Path& root, const FileSystem& files) {
    return readIn(root, manifestFileName, decodeManifest, files).map([](auto read) {
        return ManifestInPlace{std::move(read.document), std::move(read.isThere)};
    });
}

tl::expected<RemovalJournal, DocumentError> readJournal(const Path& root, const FileSystem& files) {
    return readIn(root, journalFileName, decodeJournal, files).map([](auto read) {
        return std::move(read.document);
    });
}

} // namespace tidwen
