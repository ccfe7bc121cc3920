#include "quarantine/held_items.h"

#include "base/path.h"
#include "base/timestamp.h"
#include "platform/budgeted_files.h"
#include "platform/file_system.h"
#include "posix/copied_move.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/set_aside.h"

#include <algorithm>
#include <functional>
#include <set>

namespace tidwen {

namespace {

/// More runs than have one item of one place.
constexpr std::size_t mostPlaces = 100;

/// The item itself, or what a move between disks into or out of quarantine left on its way.
bool holds(const Path& destination, const FileSystem& files) {
    return files.exists(destination) || files.isSetAside(destination) || files.exists(copyOf(destination));
}

/// Also if nobody can tell.
bool hasOtherHomes(const UserEnvironment& user, const FileSystem& files) {
    const auto homes = files.list(user.home.parent());
    return !user.otherHomes.empty() || !homes
           || std::ranges::any_of(*homes, [&](const DirectoryEntry& entry) {
                  return entry.kind == FileKind::directory && entry.name != user.home.lastComponent()
                         && entry.name != "Shared" && !entry.name.starts_with('.');
              });
}

} // namespace

std::optional<Path> HeldItems::holder(const std::string& oldPlace) {
    return find(oldPlace, [](const Planned&) { return true; });
}

std::optional<Path> HeldItems::laterHolder(const std::string& oldPlace, const Path& root, Timestamp since) {
    return find(oldPlace,
                [&](const Planned& planned) { return planned.root != root && planned.createdAt >= since; });
}

std::vector<Path> HeldItems::wholeIn(const std::string& oldPlace) {
    return placesOf(oldPlace,
                    [&](const Path& place) { return files_.exists(place) && !files_.exists(copyOf(place)); });
}

std::vector<Path> HeldItems::copiedIn(const std::string& oldPlace) {
    return placesOf(oldPlace, [&](const Path& place) { return files_.exists(copyOf(place)); });
}

std::vector<Path> HeldItems::placesOf(const std::string& oldPlace,
                                      const std::function<bool(const Path&)>& isMeant) {
    if (!isRead_) read();
    std::vector<Path> places;
    const auto known = planned_.find(oldPlace);
    if (known == planned_.end()) return places;
    for (const auto& planned : known->second) {
        const auto& place = planned.destination;
        if (places.size() == mostPlaces) break;
        if (std::ranges::find(places, place) == places.end() && isMeant(place)) places.push_back(place);
    }
    return places;
}

bool HeldItems::isElsewhereThanCopied(const ManifestEntry& move, const Path& root) {
    if (move.kind != ManifestEntryKind::move || !move.destination) return false;
    if (!files_.exists(copyOf(Path(*move.destination)))) return false;
    return std::ranges::any_of(wholeIn(move.source),
                               [&](const Path& whole) { return !whole.isWithin(root); });
}

bool HeldItems::isUnfinished(const std::string& oldPlace, const Path& place) {
    if (!isRead_) read();
    const auto known = planned_.find(oldPlace);
    return known != planned_.end() && std::ranges::any_of(known->second, [&](const Planned& planned) {
               return planned.isUnfinished && planned.destination == place;
           });
}

bool HeldItems::mayBeAnotherHomes(const Path& oldPlace) {
    if (oldPlace.isWithin(user_.home)) return false;
    if (!hasOtherHomes_) hasOtherHomes_ = hasOtherHomes(user_, files_);
    return *hasOtherHomes_;
}

std::optional<Path> HeldItems::find(const std::string& oldPlace, const Test& isMeant) {
    if (!isRead_) read();
    const auto known = planned_.find(oldPlace);
    if (known == planned_.end()) return std::nullopt;
    for (const auto& planned : known->second)
        if (isMeant(planned) && holds(planned.destination, files_)) return planned.destination;
    return std::nullopt;
}

void HeldItems::read() {
    isRead_ = true;
    const BudgetedFiles budgeted(files_);
    const auto add = [&](const Path& root, Timestamp createdAt, const std::vector<ManifestEntry>& entries) {
        const bool isUnfinished = files_.exists(root / journalFileName);
        for (const auto& entry : entries)
            if (entry.kind == ManifestEntryKind::move && entry.destination)
                planned_[entry.source].push_back({root, createdAt, Path(*entry.destination), isUnfinished});
    };
    for (const auto& root : listQuarantineFolders(user_, files_).value_or(std::vector<Path>()))
        if (const auto manifest = readManifest(root, budgeted))
            add(root, manifest->createdAt, manifest->entries);
        else if (const auto journal = readJournal(root, budgeted))
            add(root, journal->createdAt, journal->planned);
    for (auto& [oldPlace, planned] : planned_)
        std::ranges::stable_sort(planned, std::greater{}, &Planned::createdAt);
}

void dropHeldByLaterRuns(std::vector<ManifestEntry>& entries, const Path& root, Timestamp createdAt,
                         HeldItems& held) {
    std::set<std::string> copied;
    for (const auto& entry : entries)
        if (entry.isMissing && held.isElsewhereThanCopied(entry, root)) copied.insert(entry.source);
    std::erase_if(entries, [&](const ManifestEntry& entry) {
        const auto& item = entry.plistPath.value_or(entry.source);
        return entry.isMissing
               && (copied.contains(item) || held.laterHolder(item, root, createdAt).has_value());
    });
}

} // namespace tidwen
