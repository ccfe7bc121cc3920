#include "settings/app_tags.h"

#include "base/property_list.h"
#include "base/text.h"

#include <algorithm>

namespace tidwen {

namespace {

constexpr std::size_t longestTag = 64;

bool sameTag(const std::string& a, const std::string& b) {
    return folded(a) == folded(b);
}

auto find(const std::vector<std::string>& tags, const std::string& tag) {
    return std::find_if(tags.begin(), tags.end(), [&](const auto& each) { return sameTag(each, tag); });
}

bool isUsable(const std::string& tag) {
    return !tag.empty() && isValidUtf8(tag) && characterCount(tag) <= longestTag;
}

} // namespace

AppTags::AppTags(Defaults& defaults, const Texts& texts) : defaults_(defaults), texts_(texts) {
    reload();
}

AppTags::Store AppTags::read(const std::optional<PropertyListValue>& stored) {
    Store store;
    if (const auto* dictionary = stored ? stored->asDictionary() : nullptr)
        for (const auto& [bundleID, value] : *dictionary)
            for (const auto& tag : value.asStrings().value_or(std::vector<std::string>{}))
                if (auto& tags = store[bundleID];
                    isUsable(trimmed(tag)) && find(tags, trimmed(tag)) == tags.end())
                    tags.push_back(trimmed(tag));
    return store;
}

void AppTags::reload() {
    show(read(defaults_.value(defaultsKey)));
}

void AppTags::show(Store store) {
    if (store == byApp_) return;
    std::set<std::string> different;
    for (const auto* one : {&byApp_, &store})
        for (const auto& [bundleID, tags] : *one)
            if (const auto now = store.find(bundleID), before = byApp_.find(bundleID);
                now == store.end() || before == byApp_.end() || now->second != before->second)
                different.insert(bundleID);
    byApp_ = std::move(store);
    changed.emit(different);
}

std::vector<std::string> AppTags::tags(const std::string& bundleID) const {
    const auto found = byApp_.find(bundleID);
    if (found == byApp_.end()) return {};
    return sorted(found->second);
}

std::vector<std::string> AppTags::sorted(std::vector<std::string> tags) const {
    std::ranges::sort(tags, [locale = texts_.language()](const auto& a, const auto& b) {
        return compareForDisplay(a, b, locale) < 0;
    });
    return tags;
}

bool AppTags::isTagged(const std::string& bundleID, const std::string& tag) const {
    const auto found = byApp_.find(bundleID);
    return found != byApp_.end() && find(found->second, trimmed(tag)) != found->second.end();
}

std::vector<std::string> AppTags::all(const Store& store) {
    std::vector<std::string> result;
    for (const auto& [bundleID, tags] : store)
        for (const auto& tag : tags)
            if (find(result, tag) == result.end()) result.push_back(tag);
    return result;
}

std::set<std::string> AppTags::tagged(const std::string& tag) const {
    std::set<std::string> result;
    for (const auto& [bundleID, tags] : byApp_)
        if (find(tags, tag) != tags.end()) result.insert(bundleID);
    return result;
}

/// The spelling already in use for a tag, so that "Work" and "work" are one.
std::string AppTags::spelling(const std::string& tag, const Store& store) {
    const auto existing = all(store);
    const auto found = find(existing, tag);
    return found == existing.end() ? tag : *found;
}

AppTags::Result AppTags::add(const std::vector<std::string>& bundleIDs, const std::string& tag) {
    const auto name = trimmed(tag);
    if (std::ranges::find(bundleIDs, "") != bundleIDs.end() || !isUsable(name))
        return tl::unexpected(Refusal::unusableName);
    return change(Refusal::thereAlready, [bundleIDs, name](Store& store) {
        for (const auto& bundleID : bundleIDs)
            if (auto& tags = store[bundleID]; find(tags, name) == tags.end())
                tags.push_back(spelling(name, store));
    });
}

AppTags::Result AppTags::remove(const std::vector<std::string>& bundleIDs, const std::string& tag) {
    return change(Refusal::notThere, [bundleIDs, name = trimmed(tag)](Store& store) {
        for (const auto& bundleID : bundleIDs)
            std::erase_if(store[bundleID], [&](const auto& each) { return sameTag(each, name); });
    });
}

AppTags::Result AppTags::rename(const std::string& tag, const std::string& newName) {
    const auto from = trimmed(tag), name = trimmed(newName);
    if (!isUsable(name)) return tl::unexpected(Refusal::unusableName);
    const bool isThere = !tagged(from).empty();
    return change(isThere ? Refusal::thereAlready : Refusal::notThere, [from, name](Store& store) {
        const auto to = sameTag(from, name) ? name : spelling(name, store);
        for (auto& [bundleID, tags] : store)
            if (std::erase_if(tags, [&](const auto& each) { return sameTag(each, from); }) > 0
                && find(tags, to) == tags.end())
                tags.push_back(to);
    });
}

AppTags::Result AppTags::erase(const std::string& tag) {
    return change(Refusal::notThere, [name = trimmed(tag)](Store& store) {
        for (auto& [bundleID, tags] : store)
            std::erase_if(tags, [&](const auto& each) { return sameTag(each, name); });
    });
}

/// Applied to the stored state, because another process may have changed it. Damaged entries in the store are
/// dropped only when something changes.
AppTags::Result AppTags::change(Refusal unchanged, const std::function<void(Store&)>& edit) {
    const auto before = read(defaults_.value(defaultsKey));
    const bool isStored = defaults_.update(
        defaultsKey,
        [edit](const std::optional<PropertyListValue>& stored) -> std::optional<PropertyListValue> {
            const auto present = read(stored);
            auto edited = present;
            edit(edited);
            std::erase_if(edited, [](const auto& entry) { return entry.second.empty(); });
            if (edited == present) return stored;
            if (edited.empty()) return std::nullopt;
            PropertyListDictionary dictionary;
            for (const auto& [bundleID, tags] : edited)
                dictionary.emplace(bundleID, PropertyListArray(tags.begin(), tags.end()));
            return dictionary;
        });
    if (!isStored) return tl::unexpected(Refusal::notStored);
    auto after = read(defaults_.value(defaultsKey));
    const bool isChanged = after != before;
    show(std::move(after));
    if (!isChanged) return tl::unexpected(unchanged);
    return {};
}

} // namespace tidwen
