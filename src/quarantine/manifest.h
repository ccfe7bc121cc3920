#pragma once

#include "base/path.h"
#include "base/timestamp.h"
#include "operations/privileged_runner.h"
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

/// One reversible step that was carried out (docs/file-formats.md, "Manifest").
struct ManifestEntry {
    int operationID = 0;
    ManifestEntryKind kind = ManifestEntryKind::move;
    std::string source;                          ///< move: the path before removal; bootout: the label
    std::optional<std::string> destination = {}; ///< move: the path in quarantine
    std::optional<std::string> launchLabel = {}; ///< bootout
    std::optional<bool> isSystemDomain = {};     ///< bootout
    bool requiresRoot = false;
    std::string bundleID; ///< may be empty
    /// bootout: where the job's file was when the run moved it too
    std::optional<std::string> plistPath = {};
    /// move: recovery found its item neither in quarantine nor in its old place
    bool isMissing = false;
    friend bool operator==(const ManifestEntry&, const ManifestEntry&) = default;
};

/// What a run did, as it lies in its quarantine folder.
struct Manifest {
    int version = 2;
    Timestamp createdAt{};
    Path quarantineRoot;
    std::vector<AppRecord> apps = {};
    /// The moves that are missing come last; the file has them apart, in "missing".
    std::vector<ManifestEntry> entries = {};
    std::optional<Timestamp> recoveredAt = {}; ///< rebuilt from a journal at this moment
    friend bool operator==(const Manifest&, const Manifest&) = default;
};

/// What a run is about to do. The journal's file has the same form as the manifest's.
struct RemovalJournal {
    int version = 1;
    Timestamp createdAt{};
    Path quarantineRoot;
    std::vector<AppRecord> apps = {};
    std::vector<ManifestEntry> planned = {};
    friend bool operator==(const RemovalJournal&, const RemovalJournal&) = default;
};

/// What a manifest or journal may hold at most: far beyond any run, and small enough to read on any Mac.
inline constexpr std::size_t maxDocumentBytes = 32u << 20;
inline constexpr std::size_t maxManifestEntries = 100'000;

/// Why a manifest or journal was refused; `detail` is for the log ("missing key entries").
struct DocumentError {
    enum class Kind { file, malformed };
    Kind kind = Kind::malformed;
    std::string detail;
    bool isLeftOut = false;             ///< not read, because the run of the reader has read too much already
    std::optional<Path> otherRoot = {}; ///< the folder that the document is of, when it is whole otherwise
};

/// The reversible steps among `operations`; with `results`, only those that succeeded.
std::vector<ManifestEntry> manifestEntries(const std::vector<RemovalOperation>& operations);
std::vector<ManifestEntry> manifestEntries(const std::vector<RemovalOperation>& operations,
                                           const std::vector<OperationResult>& results);

std::string encode(const Manifest& manifest);
std::string encode(const RemovalJournal& journal);
/// Malformed: a missing key, a wrong type, a path that is not absolute or holds ".." or a zero byte, a
/// destination that is not below `quarantineRoot`, more than the limits. Manifests of an older form (one
/// application, no "apps") are read too.
tl::expected<Manifest, DocumentError> decodeManifest(std::string_view json);
tl::expected<RemovalJournal, DocumentError> decodeJournal(std::string_view json);

/// Written durably (content and folder flushed); the folder is created when it is missing. A journal that
/// would not read back as it is (`notSupported`) is not written.
FileResult<void> writeManifest(const Manifest& manifest, const Path& file, FileSystem& files);
FileResult<void> writeJournal(const RemovalJournal& journal, const Path& file, FileSystem& files);

/// Reads the file of the quarantine folder `root`. A `quarantineRoot` that names another folder is malformed,
/// and a link is not followed: the file lies where anybody may have written it. Destinations are as the disk
/// spells them now; those that nothing there is called by stay as they were written.
tl::expected<Manifest, DocumentError> readManifest(const Path& root, const FileSystem& files);

/// A manifest, and which of its items lie in quarantine now.
struct ManifestInPlace {
    Manifest manifest;
    std::vector<bool> isThere; ///< by entry; false where it has no destination
};
tl::expected<ManifestInPlace, DocumentError> readManifestInPlace(const Path& root, const FileSystem& files);

tl::expected<RemovalJournal, DocumentError> readJournal(const Path& root, const FileSystem& files);

} // namespace tidwen
