#include "quarantine/quarantine_purge.h"

#include "base/message.h"
#include "base/numbered_name.h"
#include "base/path.h"
#include "base/shell_word.h"
#include "base/text.h"
#include "base/timestamp.h"
#include "base/uuid.h"
#include "operations/administrator_prompt.h"
#include "operations/trash_staging.h"
#include "platform/file_system.h"
#include "quarantine/arrived_rests.h"
#include "quarantine/interrupted_return.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/set_aside.h"
#include "scan/policy/path_policy.h"

#include <chrono>
#include <fmt/core.h>
#include <optional>
#include <set>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

/// Prefix of the temporary name of an item that root is to delete; the original name follows.
constexpr std::string_view hiddenPrefix = ".tidwen-purge-";
constexpr std::size_t uuidLength = 36;

bool isSamePlace(const Path& a, const Path& b) {
    return fileNameKey(a.string()) == fileNameKey(b.string());
}

QuarantinePurge::Failure refuse(QuarantinePurge::Failure::Kind kind, const Path& folder) {
    return {kind, folder.string(), {}};
}

bool isCutOff(QuarantinePurge::Failure::Kind kind) {
    using enum QuarantinePurge::Failure::Kind;
    return kind == undoCutOff || kind == undoUnknown || kind == restOfRemoval;
}

/// What the removal left that may be nowhere else.
std::optional<Path> restOf(const Manifest& manifest, const FileSystem& files) {
    if (const auto rests = restsBesideOldPlaces(manifest.entries, files); !rests.empty())
        return rests.begin()->second;
    // A rest of an item that was put back is superfluous; without the item it may be all of it.
    for (const auto& [oldPlace, rest] : restsInQuarantine(manifest.entries, files))
        if (!files.exists(Path(oldPlace))) return rest;
    for (const auto& entry : manifest.entries) {
        if (!entry.isMissing || entry.kind != ManifestEntryKind::move || !entry.destination) continue;
        auto copy = copyOf(Path(*entry.destination));
        if (files.exists(copy) && !files.exists(Path(entry.source))) return copy;
    }
    return std::nullopt;
}

} // namespace

std::optional<Message> QuarantinePurge::Failure::describe() const {
    switch (kind) {
    case Kind::notAQuarantineFolder:
    case Kind::escapesThroughSymlink:
        return Message{blockedBySafetyPolicyKey};
    case Kind::unsettled:
        return Message{"failure.purge.unsettled"};
    case Kind::undoCutOff:
        return Message{"failure.purge.undoCutOff %@", {text}};
    case Kind::undoUnknown:
        return Message{"failure.purge.undoUnknown %@", {text}};
    case Kind::restOfRemoval:
        return Message{restOfRemovalKey, {text}};
    case Kind::elevatedDeleteFailed:
        return noScript ? *noScript : Message{"%@", {text}}; // the tool's own output, which is not localized
    case Kind::authorizationCancelled:
        return std::nullopt;
    }
    return std::nullopt;
}

std::vector<RemovalHistoryEntry> expiredEntries(const std::vector<RemovalHistoryEntry>& entries, int days,
                                                Timestamp now) {
    std::vector<RemovalHistoryEntry> result;
    if (days <= 0) return result;
    const auto cutOff = now - std::chrono::hours(24) * days;
    for (const auto& entry : entries)
        if (entry.manifest.createdAt < cutOff) result.push_back(entry);
    return result;
}

std::string purgeScript(const std::vector<Path>& items) {
    std::string script = "d=$(/usr/bin/mktemp -d /private/tmp/tidwen-purge.XXXXXX) || exit 1\n";
    for (std::size_t i = 0; i < items.size(); ++i)
        script += fmt::format("/bin/mv -- {} \"$d/{}\" || exit 1\n", shellWord(items[i].string()), i);
    return script + "/bin/rm -rf -- \"$d\"";
}

std::optional<QuarantinePurge::Failure> QuarantinePurge::validate(const Path& folder) const {
    const auto trash = user_.trash().standardized();
    const auto path = folder.standardized();
    if (!isSamePlace(path.parent(), trash)
        || !fileNameKey(path.lastComponent()).starts_with(fileNameKey(quarantineFolderPrefix)))
        return refuse(Failure::Kind::notAQuarantineFolder, folder);
    // A link would redirect the administrator's script.
    const auto trashInfo = files_.info(trash);
    if (trashInfo && trashInfo->kind != FileKind::directory)
        return refuse(Failure::Kind::escapesThroughSymlink, folder);
    const auto realTrash = files_.resolve(trash);
    const auto realPath = files_.resolve(path);
    if (!trashInfo || !realTrash || !realPath) return refuse(Failure::Kind::notAQuarantineFolder, folder);
    if (!isSamePlace(realPath->parent(), *realTrash))
        return refuse(Failure::Kind::escapesThroughSymlink, folder);
    const auto info = files_.info(path);
    if (!info || info->kind != FileKind::directory)
        return refuse(Failure::Kind::escapesThroughSymlink, folder);
    // Another disk, or another folder of this disk, is mounted there.
    if (info->device != trashInfo->device || info->mount != trashInfo->mount)
        return refuse(Failure::Kind::notAQuarantineFolder, folder);
    // A link in the user's documents, or in another user's home, may have its target in the run.
    const PathPolicy policy(user_, files_);
    if (policy.holdsProtectedPlace(path) || policy.holdsProtectedPlace(*realPath))
        return refuse(Failure::Kind::notAQuarantineFolder, folder);
    // A readable manifest means that the run has ended, even if its journal could not be removed.
    const auto manifest = readManifest(path, files_);
    if (files_.exists(path / journalFileName) && !manifest) return refuse(Failure::Kind::unsettled, folder);
    if (!files_.exists(path / manifestFileName)) return refuse(Failure::Kind::notAQuarantineFolder, folder);
    // Nothing but the run records these.
    if (!manifest) return std::nullopt;
    InterruptedReturns returns(files_);
    if (const auto found = returns.of(manifest->entries); !found.empty())
        return refuse(Failure::Kind::undoCutOff, found.front().copy);
    if (!returns.unlisted().empty()) return refuse(Failure::Kind::undoUnknown, *returns.unlisted().begin());
    if (const auto rest = restOf(*manifest, files_)) return refuse(Failure::Kind::restOfRemoval, *rest);
    return std::nullopt;
}

std::vector<Path> QuarantinePurge::foreignItems(const Path& folder) const {
    std::vector<Path> result;
    const auto entries = files_.list(folder);
    if (!entries) return result;
    for (const auto& entry : *entries) {
        const Path item = folder / entry.name;
        const auto foreign = files_.holdsOthersItems(item, user_.userID);
        const auto fault = foreign ? FileFault::missing : foreign.error().fault;
        // root's rm would delete the content of the mount.
        if (fault == FileFault::otherDisk)
            log_.warning("Left alone, something is mounted there: {}", item.string());
        else if (foreign ? *foreign : fault != FileFault::missing)
            result.push_back(item);
    }
    return result;
}

/// If the run's folder is replaced by a link while the prompt is open, root would delete the item of the same
/// name at the link's target. Each item therefore gets a unique name, in the run's folder or, where root may
/// not enter the Trash, in the one beside it.
class QuarantinePurge::HiddenItems {
  public:
    HiddenItems(FileSystem& files, AdminScriptRunner::Trash trash) : files_(files), trash_(trash) {}
    HiddenItems(const HiddenItems&) = delete;
    HiddenItems& operator=(const HiddenItems&) = delete;
    ~HiddenItems() {
        for (std::size_t i = 0; i < originals_.size(); ++i)
            (void)files_.move(hidden_[i], originals_[i]); // fails for those that root has moved
        for (const auto& folder : staging_)
            dropEmptyStaging(folder, files_);
    }

    FileResult<void> add(const Path& item) {
        const auto name = fmt::format("{}{}-{}", hiddenPrefix, Uuid::random().string(), item.lastComponent());
        const auto folder = folderFor(item.parent());
        if (!folder) return tl::unexpected(folder.error());
        const Path hidden = *folder / shortened(name, longestFileName);
        if (const auto moved = files_.move(item, hidden); !moved) return tl::unexpected(moved.error());
        originals_.push_back(item);
        hidden_.push_back(hidden);
        return {};
    }
    const std::vector<Path>& paths() const { return hidden_; }

  private:
    FileResult<Path> folderFor(const Path& run) {
        const auto staging =
            trash_ == AdminScriptRunner::Trash::closedToRoot ? stagingPlace(run) : std::nullopt;
        if (!staging || staging_.contains(*staging)) return staging.value_or(run);
        staging_.insert(*staging);
        return makeStagingFolder(*staging, files_).map([&] { return *staging; });
    }

    FileSystem& files_;
    AdminScriptRunner::Trash trash_;
    std::vector<Path> originals_, hidden_;
    std::set<Path> staging_;
};

void QuarantinePurge::showHiddenItems(const Path& folder) {
    const auto showFrom = [&](const Path& place) {
        const auto entries = files_.list(place);
        if (!entries) return;
        for (const auto& entry : *entries) {
            const std::string_view name = entry.name;
            if (!name.starts_with(hiddenPrefix)) continue;
            const auto rest = name.substr(hiddenPrefix.size());
            if (rest.size() > uuidLength + 1 && Uuid::parse(rest.substr(0, uuidLength)))
                (void)files_.move(place / entry.name, folder / rest.substr(uuidLength + 1));
        }
    };
    showFrom(folder);
    if (!isStaged(folder, files_)) return;
    const auto staging = *stagingPlace(folder);
    showFrom(staging);
    dropEmptyStaging(staging, files_);
}

std::optional<QuarantinePurge::Failure>
QuarantinePurge::removeAsAdministrator(const std::vector<Path>& items) {
    HiddenItems hidden(files_, trash_);
    for (const auto& item : items)
        if (const auto added = hidden.add(item); !added)
            return Failure{Failure::Kind::elevatedDeleteFailed, item.string(),
                           Message{std::string(failureKey(added.error().fault))}};
    const auto result = (*administrator_)(purgeScript(hidden.paths()));
    if (!result) {
        if (result.error().kind == AdminScriptRunnerError::Kind::authorizationCancelled)
            return Failure{Failure::Kind::authorizationCancelled, {}};
        if (result.error().kind != AdminScriptRunnerError::Kind::scriptFailed)
            return Failure{Failure::Kind::elevatedDeleteFailed, {}, result.error().describe()};
        return Failure{Failure::Kind::elevatedDeleteFailed, result.error().message};
    }
    if (result->exitCode != 0)
        return Failure{Failure::Kind::elevatedDeleteFailed, trimmed(result->standardError)};
    log_.info("Purged {} root-owned quarantine items", items.size());
    return std::nullopt;
}

/// The name tells every reader that what is left after a kill is not whole.
FileResult<void> QuarantinePurge::removeMarked(const Path& entry) {
    const auto& name = entry.lastComponent();
    if (isRunDocument(name) || isNameWhilePurged(name)) return files_.removeTree(entry);
    const Path marked = entry.parent() / nameWhilePurged(name);
    if (files_.exists(marked))
        if (auto removed = files_.removeTree(marked); !removed) return removed;
    if (const auto moved = files_.move(entry, marked); !moved) return tl::unexpected(moved.error());
    return files_.removeTree(marked);
}

FileResult<void> QuarantinePurge::removeRun(const Path& folder) {
    const auto entries = files_.list(folder);
    if (!entries) return tl::unexpected(entries.error());
    FileResult<void> outcome;
    for (const auto& entry : *entries)
        if (entry.name != manifestFileName)
            if (auto removed = removeMarked(folder / entry.name); !removed) outcome = std::move(removed);
    // The manifest is deleted last: a partly deleted run stays in the history and can be deleted later.
    return outcome ? files_.removeTree(folder) : outcome;
}

/// The chosen runs that may be deleted; those that must stay are in the outcome.
tl::expected<std::vector<Path>, QuarantinePurge::Failure>
QuarantinePurge::deletable(const std::vector<Path>& chosen, CutOffUndo cutOffUndo, Outcome& outcome) const {
    std::vector<Path> folders;
    folders.reserve(chosen.size());
    for (const auto& folder : chosen) {
        auto failure = validate(folder);
        if (!failure) {
            folders.push_back(folder);
        } else if (cutOffUndo == CutOffUndo::keep && isCutOff(failure->kind)) {
            outcome.kept.push_back(folder);
            outcome.cutOffUndos.emplace(folder, std::move(*failure));
        } else {
            return tl::unexpected(std::move(*failure));
        }
    }
    return folders;
}

std::optional<QuarantinePurge::Failure> QuarantinePurge::removeForeignItems(const std::vector<Path>& folders,
                                                                            const StepControl& control) {
    if (!administrator_) return std::nullopt;
    std::vector<Path> foreign;
    for (const auto& folder : folders) {
        showHiddenItems(folder.standardized());
        for (auto& item : foreignItems(folder.standardized()))
            foreign.push_back(std::move(item));
    }
    if (foreign.empty() || control.isStopped()) return std::nullopt;
    control.report({.step = 1, .total = folders.size(), .kind = "administrator"});
    return removeAsAdministrator(foreign);
}

void QuarantinePurge::removeUnlessOthers(const Path& folder, Outcome& outcome) {
    if (!administrator_ && !isWhollyOurs(folder.standardized())) {
        log_.error("Left whole, not all of it may be deleted: {}", folder.string());
        outcome.kept.push_back(folder);
        outcome.othersItems.push_back(folder);
    } else if (const auto removed = removeRun(folder.standardized()); removed) {
        log_.info("Purged quarantine folder {}", folder.string());
        ++outcome.removedFolders;
    } else {
        log_.error("Could not purge a quarantine folder: {}", removed.error().path.string());
        outcome.kept.push_back(folder);
    }
}

tl::expected<QuarantinePurge::Outcome, QuarantinePurge::Failure>
QuarantinePurge::purge(const std::vector<Path>& chosen, const StepControl& control, CutOffUndo cutOffUndo) {
    Outcome outcome;
    const auto folders = deletable(chosen, cutOffUndo, outcome);
    if (!folders) return tl::unexpected(folders.error());
    if (auto failure = removeForeignItems(*folders, control)) return tl::unexpected(std::move(*failure));
    for (std::size_t i = 0; i < folders->size(); ++i) {
        const auto& folder = (*folders)[i];
        if (control.isStopped()) {
            outcome.kept.push_back(folder);
            outcome.notBegun.push_back(folder);
            continue;
        }
        control.report({i + 1, folders->size(), "purge", folder.string()});
        removeUnlessOthers(folder, outcome);
    }
    return outcome;
}

bool QuarantinePurge::isWhollyOurs(const Path& folder) const {
    // On a volume this process itself deletes, so its own account decides, not the volume's user.
    const auto owner = administrator_ ? std::optional(user_.userID) : std::nullopt;
    const auto foreign = files_.holdsOthersItems(folder, owner);
    return foreign && !*foreign;
}

int QuarantinePurge::purgeExpired(int days, Timestamp now, const StepControl& control) {
    const auto history = loadHistory(user_, files_, false);
    if (administrator_)
        for (const auto& entry : history)
            showHiddenItems(entry.root);
    int removed = 0;
    const auto expired = expiredEntries(history, days, now);
    for (std::size_t i = 0; i < expired.size() && !control.isStopped(); ++i) {
        const auto& entry = expired[i];
        if (!hasTrustworthyDate(entry.manifest, now)) continue;
        control.report({i + 1, expired.size(), "purge", entry.root.string()});
        if (validate(entry.root) || !isWhollyOurs(entry.root) || !removeRun(entry.root)) {
            log_.warning("Automatic purge refused {}", entry.root.string());
            continue;
        }
        log_.info("Purged quarantine folder {}", entry.root.string());
        ++removed;
    }
    if (removed > 0) log_.info("Automatic purge removed {} quarantine folders", removed);
    return removed;
}

} // namespace tidwen
