#pragma once

#include "base/message.h"
#include "quarantine/manifest.h"

#include <set>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Items of one run, by their old places as its record has them. Where it chooses, an empty one means all.
using ItemChoice = std::set<std::string>;

/// Where an item that a run moved is now.
enum class ItemPlace {
    inQuarantine, ///< or still on its way out of it
    putBack,      ///< something lies in its old place
    missing,      ///< neither: somebody took it out of quarantine, or from its place since
};
/// "inQuarantine" and so on, as in JSON.
std::string_view name(ItemPlace place);

/// Where the item of a `move` entry is now. Only looks.
ItemPlace placeOf(const ManifestEntry& move, const FileSystem& files);
/// The same for who has looked into the quarantine already.
ItemPlace placeOf(const ManifestEntry& move, bool isInQuarantine, const FileSystem& files);

struct RunItem {
    ManifestEntry entry; ///< a move
    ItemPlace place = ItemPlace::inQuarantine;
};

/// The items that the run moved, in its order.
std::vector<RunItem> runItems(const Manifest& manifest, const FileSystem& files);

/// The items that words mean: an old place, its last components when only one item has them, or the name or
/// identifier of an application of the run, which stands for all of its items. Names are compared as a Mac's
/// disks compare them. Gives the reason when a word means none or several.
tl::expected<ItemChoice, Message> findItems(const Manifest& manifest, const std::vector<std::string>& words);

} // namespace tidwen
