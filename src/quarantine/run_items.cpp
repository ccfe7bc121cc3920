#include "quarantine/run_items.h"

#include "base/numbered_name.h"
#include "base/path.h"
#include "base/path_key.h"
#include "base/text.h"
#include "platform/file_system.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

namespace {

/// `end`: absolute; its components without the root are compared.
bool endsIn(const Path& path, const Path& end) {
    const auto parts = path.components(), last = end.components();
    return last.size() > 1 && last.size() <= parts.size()
           && std::equal(last.rbegin(), std::prev(last.rend()), parts.rbegin());
}

/// Whether the entry belongs to an application with this name or identifier, alone or with others.
bool isOf(const ManifestEntry& entry, const std::string& name, const Manifest& manifest) {
    const auto key = fileNameKey(name);
    return std::ranges::any_of(manifest.apps, [&](const AppRecord& app) {
        const bool isCalledSo = fileNameKey(app.name) == key || fileNameKey(app.bundleID) == key;
        const bool owns = app.bundleID == entry.bundleID
                          || std::ranges::find(entry.sharedWith, app.bundleID) != entry.sharedWith.end();
        return isCalledSo && !key.empty() && owns;
    });
}

/// The receipt of which this is one of the two files; nullopt for anything else.
std::optional<std::string> receiptOf(const Path& item) {
    const bool isFile = item.extension() == "bom" || item.extension() == "plist";
    const auto folder = item.parent().string();
    if (!isFile || (folder != "/private/var/db/receipts" && folder != "/var/db/receipts"))
        return std::nullopt;
    return item.stem();
}

template<class Test>
ItemChoice where(const Manifest& manifest, const Test& isMeant) {
    ItemChoice found;
    for (const auto& entry : manifest.entries)
        if (entry.kind == ManifestEntryKind::move && isMeant(entry)) found.insert(entry.source);
    return found;
}

tl::expected<ItemChoice, Message> find(const Manifest& manifest, const std::string& word) {
    const auto key = pathKey(Path("/" + word).standardized());
    auto found = where(manifest, [&](const auto& entry) { return entry.source == word; });
    if (found.empty() && word.starts_with('/'))
        found = where(manifest, [&](const auto& entry) { return pathKey(Path(entry.source)) == key; });
    if (found.empty()) found = where(manifest, [&](const auto& each) { return isOf(each, word, manifest); });
    if (!found.empty()) return found;
    if (!word.starts_with('/'))
        found = where(manifest, [&](const auto& entry) { return endsIn(pathKey(Path(entry.source)), key); });
    if (found.empty()) return tl::unexpected(Message{"history.item.unknown %@", {word}});
    if (found.size() == 1) return found;
    std::string all;
    for (const auto& item : found)
        all += (all.empty() ? "" : ", ") + item;
    return tl::unexpected(Message{"history.item.ambiguous %@ %@", {word, all}});
}

} // namespace

std::string_view name(ItemPlace place) {
    switch (place) {
    case ItemPlace::inQuarantine:
        return "inQuarantine";
    case ItemPlace::putBack:
        return "putBack";
    case ItemPlace::missing:
        return "missing";
    }
    return {};
}

ItemPlace placeOf(const ManifestEntry& move, const FileSystem& files) {
    return placeOf(move, move.destination && files.exists(Path(*move.destination)), files);
}

ItemPlace placeOf(const ManifestEntry& move, bool isInQuarantine, const FileSystem& files) {
    // An interrupted undo between two devices still has to complete its return.
    if (isInQuarantine || (move.destination && files.isSetAside(Path(*move.destination))))
        return ItemPlace::inQuarantine;
    return files.exists(Path(move.source)) ? ItemPlace::putBack : ItemPlace::missing;
}

bool mayBeBeside(const RunItem& item, const FileSystem& files) {
    return item.place == ItemPlace::putBack && files.exists(numberedName(Path(item.entry.source), 2));
}

std::vector<RunItem> runItems(const Manifest& manifest, const FileSystem& files,
                              const ItemChoice& takenAgain) {
    std::vector<RunItem> items;
    for (const auto& entry : manifest.entries) {
        if (entry.kind != ManifestEntryKind::move) continue;
        auto place = placeOf(entry, files);
        if (place == ItemPlace::missing && takenAgain.contains(entry.source)) place = ItemPlace::putBack;
        items.push_back({entry, place});
    }
    return items;
}

tl::expected<ItemChoice, Message> findItems(const Manifest& manifest, const std::vector<std::string>& words) {
    ItemChoice all;
    for (const auto& word : words) {
        auto found = find(manifest, word);
        if (!found) return found;
        all.merge(*found);
    }
    return all;
}

ItemChoice withWholeReceipts(ItemChoice choice, const Manifest& manifest) {
    ItemChoice receipts;
    for (const auto& item : choice)
        if (auto receipt = receiptOf(Path(item))) receipts.insert(*std::move(receipt));
    if (receipts.empty()) return choice;
    choice.merge(where(manifest, [&](const ManifestEntry& entry) {
        const auto receipt = receiptOf(Path(entry.source));
        return receipt && receipts.contains(*receipt);
    }));
    return choice;
}

} // namespace tidwen
