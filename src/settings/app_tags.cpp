#include "settings/app_tags.h"

#include "base/text.h"

#include <algorithm>

namespace tidwen {

namespace {

constexpr std::size_t longestTag = 64;

bool sameTag(const std::string& a, const std::string& b) {
    return lowercased(composed(a)) == lowercased(composed(b));
}

auto find(const std::vector<std::string>& tags, const std::string& tag) {
    return std::find_if(tags.begin(), tags.end(), [&](const auto& each) { return sameTag(each, tag); });
}

bool isUsable(const std::string& tag) {
    return !tag.empty() && isValidUtf8(tag) && characterCount(tag) <= longestTag;
}

} // namespace

AppTags::AppTags(Defaults& defaults) : defaults_(defaults) {
    reload();
}

void AppTags::reload() {
    Store read;
    const auto stored = defaults_.value(defaultsKey);
    if (const auto* dictionary = stored ? stored->asDictionary() : nullptr)
        for (const auto& [bundleID, value] : *dictionary)
            for (const auto& tag : value.asStrings().value_or(std::vector<std::string>{}))
                if (auto& tags = read[bundleID];
                    isUsable(trimmed(tag)) && find(tags, trimmed(tag)) == tags.end())
                    tags.push_back(trimmed(tag));
    if (read == byApp_) return;
    byApp_ = std::move(read);
    changed.emit();
}

std::vector<std::string> AppTags::tags(const std::string& bundleID) const {
    const auto found = byApp_.find(bundleID);
    if (found == byApp_.end()) return {};
    auto tags = found->second;
    std::sort(tags.begin(), tags.end(),
              [](const auto& a, const auto& b) { return compareForDisplay(a, b) < 0; });
    return tags;
}

std::vector<std::string> AppTags::all() const {
    std::vector<std::string> result;
    for (const auto& [bundleID, tags] : byApp_)
        for (const auto& tag : tags)
            if (find(result, tag) == result.end()) result.push_back(tag);
    std::sort(result.begin(), result.end(),
              [](const auto& a, const auto& b) { return compareForDisplay(a, b) < 0; });
    return result;
}

std::set<std::string> AppTags::tagged(const std::string& tag) const {
    std::set<std::string> result;
    for (const auto& [bundleID, tags] : byApp_)
        if (find(tags, tag) != tags.end()) result.insert(bundleID);
    return result;
}

/// The spelling already in use for a tag, so that "Work" and "work" stay one.
std::string AppTags::spelling(const std::string& tag) const {
    const auto existing = all();
    const auto found = find(existing, tag);
    return found == existing.end() ? tag : *found;
}

bool AppTags::add(const std::string& bundleID, const std::string& tag) {
    const auto name = trimmed(tag);
    if (bundleID.empty() || !isUsable(name)) return false;
    auto next = byApp_;
    auto& tags = next[bundleID];
    if (find(tags, name) != tags.end()) return false;
    tags.push_back(spelling(name));
    return store(std::move(next));
}

bool AppTags::remove(const std::string& bundleID, const std::string& tag) {
    auto next = byApp_;
    const auto found = next.find(bundleID);
    if (found == next.end()
        || std::erase_if(found->second, [&](const auto& each) { return sameTag(each, trimmed(tag)); }) == 0)
        return false;
    return store(std::move(next));
}

bool AppTags::rename(const std::string& tag, const std::string& newName) {
    const auto from = trimmed(tag);
    auto to = trimmed(newName);
    if (!isUsable(to)) return false;
    if (!sameTag(from, to)) to = spelling(to);
    auto next = byApp_;
    for (auto& [bundleID, tags] : next)
        if (std::erase_if(tags, [&](const auto& each) { return sameTag(each, from); }) > 0
            && find(tags, to) == tags.end())
            tags.push_back(to);
    return next != byApp_ && store(std::move(next));
}

bool AppTags::erase(const std::string& tag) {
    auto next = byApp_;
    for (auto& [bundleID, tags] : next)
        std::erase_if(tags, [&](const auto& each) { return sameTag(each, trimmed(tag)); });
    return next != byApp_ && store(std::move(next));
}

bool AppTags::store(Store next) {
    std::erase_if(next, [](const auto& entry) { return entry.second.empty(); });
    PropertyListDictionary dictionary;
    for (const auto& [bundleID, tags] : next)
        dictionary.emplace(bundleID, PropertyListArray(tags.begin(), tags.end()));
    const bool stored = defaults_.setValue(
        defaultsKey,
        dictionary.empty() ? std::nullopt : std::optional<PropertyListValue>(std::move(dictionary)));
    if (!stored) return false;
    byApp_ = std::move(next);
    changed.emit();
    return true;
}

} // namespace tidwen
