#pragma once

#include "base/message.h"
#include "platform/file_system.h"
#include "quarantine/manifest.h"

#include <set>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Items of one run, by their old paths as recorded. As a selection, empty means all.
using ItemChoice = std::set<std::string>;

/// Where an item of a run is now.
enum class ItemPlace {
    inQuarantine, ///< or on its way out of it
    putBack,      ///< something is at its old path, or a later run moved it from there
    missing,      ///< neither: removed from quarantine, or put back and then removed
};
/// The JSON value ("inQuarantine" …).
std::string_view name(ItemPlace place);

/// Where the item of a `move` entry is now. Changes nothing.
ItemPlace placeOf(const ManifestEntry& move, const FileSystem& files);
/// For callers that have already looked into the quarantine.
ItemPlace placeOf(const ManifestEntry& move, bool isInQuarantine, const FileSystem& files);

struct RunItem {
    ManifestEntry entry; ///< a move
    ItemPlace place = ItemPlace::inQuarantine;
};

/// Whether an undo may have put the item beside its old path, under a free name: the manifest does not record
/// that, but such a name is taken.
bool mayBeBeside(const RunItem& item, const FileSystem& files);

/// The items the run moved, in its order. Those of `takenAgain` were put back and belong to a later run.
std::vector<RunItem> runItems(const Manifest& manifest, const FileSystem& files,
                              const ItemChoice& takenAgain = {});

/// Resolves words to items: an old path, its last components if unique, or the name or identifier of an
/// application of the run, which selects all of its items. Names are compared as a Mac's file systems do. The
/// error says which word matches none or several.
tl::expected<ItemChoice, Message> findItems(const Manifest& manifest, const std::vector<std::string>& words);

/// The choice and, of each installer receipt of which it has one file, the other one: a receipt without its
/// list of files counts as unreadable.
ItemChoice withWholeReceipts(ItemChoice choice, const Manifest& manifest);

} // namespace tidwen
