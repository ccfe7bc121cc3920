#include "quarantine/quarantine_purge.h"

#include "base/text.h"
#include "operations/admin_batch.h"
#include "quarantine/quarantine_layout.h"
#include "scan/path_policy.h"

#include <fmt/core.h>

namespace tidwen {

namespace {

// Deeper than any real tree; a deeper one counts as somebody else's, which only costs a prompt.
constexpr int deepestLook = 200;

QuarantinePurge::Failure refuse(QuarantinePurge::Failure::Kind kind, const Path& folder) {
    return {kind, folder.string(), {}};
}

} // namespace

std::optional<Message> QuarantinePurge::Failure::describe() const {
    switch (kind) {
    case Kind::notAQuarantineFolder:
    case Kind::escapesThroughSymlink:
        return Message{blockedBySafetyPolicyKey};
    case Kind::elevatedDeleteFailed:
        return noScript ? *noScript
                        : Message{"%@", {text}}; // the tool's own words, which no language file can know
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
        script +=
            fmt::format("/bin/mv -- {} \"$d/{}\" || exit 1\n", adminBatch::quoted(items[i].string()), i);
    return script + "/bin/rm -rf -- \"$d\"";
}

std::optional<QuarantinePurge::Failure> QuarantinePurge::validate(const Path& folder) const {
    const auto trash = user_.trash().standardized();
    const auto path = folder.standardized();
    if (path.parent() != trash || !path.lastComponent().starts_with(quarantineFolderPrefix))
        return refuse(Failure::Kind::notAQuarantineFolder, folder);
    // A Trash that is a link would lead the administrator's script elsewhere.
    if (const auto place = files_.info(trash); place && place->kind != FileKind::directory)
        return refuse(Failure::Kind::escapesThroughSymlink, folder);
    const auto realTrash = files_.resolve(trash);
    const auto realPath = files_.resolve(path);
    if (!realTrash || !realPath) return refuse(Failure::Kind::notAQuarantineFolder, folder);
    if (realPath->parent() != *realTrash) return refuse(Failure::Kind::escapesThroughSymlink, folder);
    const auto info = files_.info(path);
    if (!info || info->kind != FileKind::directory)
        return refuse(Failure::Kind::escapesThroughSymlink, folder);
    if (!files_.exists(path / manifestFileName)) return refuse(Failure::Kind::notAQuarantineFolder, folder);
    return std::nullopt;
}

bool QuarantinePurge::isForeign(const Path& item, int depth) const {
    const auto info = files_.info(item);
    if (!info || info->ownerID != user_.userID || depth > deepestLook) return true;
    if (info->kind != FileKind::directory) return false;
    const auto entries = files_.list(item);
    if (!entries) return true;
    for (const auto& entry : *entries)
        if (isForeign(item / entry.name, depth + 1)) return true;
    return false;
}

std::vector<Path> QuarantinePurge::foreignItems(const Path& folder) const {
    std::vector<Path> result;
    if (const auto entries = files_.list(folder))
        for (const auto& entry : *entries)
            if (isForeign(folder / entry.name, 0)) result.push_back(folder / entry.name);
    return result;
}

std::optional<QuarantinePurge::Failure>
QuarantinePurge::removeAsAdministrator(const std::vector<Path>& items) {
    const auto result = (*administrator_)(purgeScript(items));
    if (!result) {
        if (result.error().kind == AdminScriptRunnerError::Kind::authorizationCancelled)
            return Failure{Failure::Kind::authorizationCancelled, {}};
        if (result.error().kind == AdminScriptRunnerError::Kind::process)
            return Failure{Failure::Kind::elevatedDeleteFailed, {}, result.error().describe()};
        return Failure{Failure::Kind::elevatedDeleteFailed, result.error().message};
    }
    if (result->exitCode != 0)
        return Failure{Failure::Kind::elevatedDeleteFailed, trimmed(result->standardError)};
    log_.info("Purged {} root-owned quarantine items", items.size());
    return std::nullopt;
}

FileResult<void> QuarantinePurge::removeRun(const Path& folder) {
    const auto entries = files_.list(folder);
    if (!entries) return tl::unexpected(entries.error());
    FileResult<void> outcome;
    for (const auto& entry : *entries)
        if (entry.name != manifestFileName)
            if (auto removed = files_.removeTree(folder / entry.name); !removed) outcome = std::move(removed);
    // The manifest goes last: a run of which something stays remains in the history, to be deleted later.
    return outcome ? files_.removeTree(folder) : outcome;
}

tl::expected<QuarantinePurge::Outcome, QuarantinePurge::Failure>
QuarantinePurge::purge(const std::vector<Path>& folders) {
    for (const auto& folder : folders)
        if (auto failure = validate(folder)) return tl::unexpected(std::move(*failure));

    if (administrator_) {
        std::vector<Path> foreign;
        for (const auto& folder : folders)
            for (auto& item : foreignItems(folder.standardized()))
                foreign.push_back(std::move(item));
        if (!foreign.empty())
            if (auto failure = removeAsAdministrator(foreign)) return tl::unexpected(std::move(*failure));
    }

    Outcome outcome;
    for (const auto& folder : folders) {
        if (const auto removed = removeRun(folder.standardized()); removed) {
            log_.info("Purged quarantine folder {}", folder.string());
            ++outcome.removedFolders;
        } else {
            log_.error("Could not purge a quarantine folder: {}", removed.error().path.string());
            outcome.kept.push_back(folder);
        }
    }
    return outcome;
}

int QuarantinePurge::purgeExpired(int days, Timestamp now) {
    if (days <= 0) return 0;
    int removed = 0;
    for (const auto& entry : expiredEntries(loadHistory(user_, files_, false), days, now)) {
        if (!hasTrustworthyDate(entry.manifest, now)) continue;
        if (validate(entry.root) || !removeRun(entry.root)) {
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
