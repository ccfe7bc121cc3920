#pragma once

#include "base/path.h"
#include "base/timestamp.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// One application of a run.
struct AppRecord {
    std::string name;
    std::string bundleID; ///< may be empty
    friend bool operator==(const AppRecord&, const AppRecord&) = default;
};

enum class ManifestEntryKind { move, bootout };

/// One reversible step that was executed (docs/file-formats.md, "Manifest").
struct ManifestEntry {
    int operationID = 0;
    ManifestEntryKind kind = ManifestEntryKind::move;
    std::string source;                          ///< move: the path before removal; bootout: the label
    std::optional<std::string> destination = {}; ///< move: the path in quarantine
    std::optional<std::string> launchLabel = {}; ///< bootout
    std::optional<bool> isSystemDomain = {};     ///< bootout
    bool requiresRoot = false;
    std::string bundleID; ///< may be empty
    /// move: the identifiers of other applications of the run that claim the item too
    std::vector<std::string> sharedWith = {};
    /// bootout: the path of the job's property list, if the run moved it too
    std::optional<std::string> plistPath = {};
    /// move: recovery found the item neither in quarantine nor at its old path; bootout: it found the job's
    /// property list at neither, and the job is loaded once that exists again
    bool isMissing = false;
    friend bool operator==(const ManifestEntry&, const ManifestEntry&) = default;
};

/// What a run did; stored in its quarantine folder.
struct Manifest {
    int version = 2;
    Timestamp createdAt{};
    Path quarantineRoot;
    std::vector<AppRecord> apps = {};
    /// Missing ones come last; the file keeps them separately, in "missing".
    std::vector<ManifestEntry> entries = {};
    std::optional<Timestamp> recoveredAt = {}; ///< set when rebuilt from a journal
    /// The kinds of the executed steps that cannot be undone and changed something; absent when unknown.
    std::optional<std::vector<std::string>> irreversible = {};
    friend bool operator==(const Manifest&, const Manifest&) = default;
};

/// What a run is about to do. The file has the same format as the manifest.
struct RemovalJournal {
    int version = 1;
    Timestamp createdAt{};
    Path quarantineRoot;
    std::vector<AppRecord> apps = {};
    std::vector<ManifestEntry> planned = {};
    friend bool operator==(const RemovalJournal&, const RemovalJournal&) = default;
};

/// Limits of a manifest or journal: far beyond any run, and small enough to read on any Mac.
inline constexpr std::size_t maxDocumentBytes = 32u << 20;
inline constexpr std::size_t maxManifestEntries = 100'000;

/// Why a manifest or journal was rejected; `detail` is for the log ("missing key entries").
struct DocumentError {
    enum class Kind { file, malformed };
    Kind kind = Kind::malformed;
    std::string detail;
    bool isLeftOut = false;             ///< not read because the reader's budget is exhausted
    std::optional<Path> otherRoot = {}; ///< the folder the document names, if it is otherwise valid
};

/// The reversible steps among `operations`; with `results`, only those that succeeded.
std::vector<ManifestEntry> manifestEntries(const std::vector<RemovalOperation>& operations);
std::vector<ManifestEntry> manifestEntries(const std::vector<RemovalOperation>& operations,
                                           const std::vector<OperationResult>& results);

std::string encode(const Manifest& manifest);
std::string encode(const RemovalJournal& journal);
/// Malformed: a missing key, a wrong type, a path that is not absolute or contains ".." or a NUL, a
/// destination outside `quarantineRoot`, limits exceeded. In a manifest a source need only be without a NUL:
/// an undo refuses one that names no place, and puts the other items back. The older format (one application,
/// no "apps") is also read.
tl::expected<Manifest, DocumentError> decodeManifest(std::string_view json);
tl::expected<RemovalJournal, DocumentError> decodeJournal(std::string_view json);

/// Durable (content and folder are flushed). Creates a missing folder. A journal that would not read back
/// identically is not written (`notSupported`).
FileResult<void> writeManifest(const Manifest& manifest, const Path& file, FileSystem& files);
FileResult<void> writeJournal(const RemovalJournal& journal, const Path& file, FileSystem& files);

/// Reads the file of the quarantine folder `root`. A `quarantineRoot` that names another folder is malformed,
/// and links are not followed: any program may have written the file. Destinations use the current spelling
/// on disk; those that match no entry stay as written.
tl::expected<Manifest, DocumentError> readManifest(const Path& root, const FileSystem& files);

/// A manifest, and which of its items are in quarantine now.
struct ManifestInPlace {
    Manifest manifest;
    std::vector<bool> isThere; ///< by entry; false without a destination
};
tl::expected<ManifestInPlace, DocumentError> readManifestInPlace(const Path& root, const FileSystem& files);

tl::expected<RemovalJournal, DocumentError> readJournal(const Path& root, const FileSystem& files);

} // namespace tidwen
