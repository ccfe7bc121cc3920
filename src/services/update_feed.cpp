#include "services/update_feed.h"

#include "base/json.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace tidwen {

using nlohmann::json;

namespace {

constexpr std::size_t maxFeedBytes = 1u << 20;
constexpr std::size_t maxReleases = 1000;
constexpr std::size_t maxSystems = 16;
constexpr std::size_t maxNameLength = 32;
constexpr std::size_t maxNotesBytes = 16u << 10;
constexpr std::size_t maxAddressLength = 2000;

const std::string* text(const json& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : found->get_ptr<const std::string*>();
}

std::optional<std::map<std::string, VersionNumber>> systems(const json& release) {
    const auto found = release.find("minimumSystem");
    if (found == release.end() || !found->is_object() || found->empty() || found->size() > maxSystems)
        return std::nullopt;
    std::map<std::string, VersionNumber> result;
    for (auto item = found->begin(); item != found->end(); ++item) {
        const auto* written = item->get_ptr<const std::string*>();
        const auto least = written ? VersionNumber::parse(*written) : std::nullopt;
        if (!least || item.key().empty() || item.key().size() > maxNameLength) return std::nullopt;
        result.emplace(item.key(), *least);
    }
    return result;
}

std::optional<Release> parseRelease(const json& value) {
    if (!value.is_object()) return std::nullopt;
    const auto* version = text(value, "version");
    const auto* date = text(value, "date");
    const auto* url = text(value, "url");
    if (!version || !date || !url || !isPlainHttpsAddress(*url)) return std::nullopt;
    const auto number = VersionNumber::parse(*version);
    const auto day = parseIso8601(*date);
    auto minimumSystem = systems(value);
    if (!number || !day || !minimumSystem) return std::nullopt;
    Release release{*version, *number, std::move(*minimumSystem), *day, *url, {}};
    if (value.contains("notes")) {
        const auto* notes = text(value, "notes");
        if (!notes || notes->size() > maxNotesBytes) return std::nullopt;
        release.notes = *notes;
    }
    return release;
}

} // namespace

bool isPlainHttpsAddress(std::string_view text) {
    constexpr std::string_view scheme = "https://";
    if (text.size() > maxAddressLength || !text.starts_with(scheme)) return false;
    for (const char c : text)
        if (c <= ' ' || c > '~') return false;
    text.remove_prefix(scheme.size());
    const auto host = text.substr(0, text.find('/'));
    return !host.empty() && text.find_first_of("@?#\\\"<>") == text.npos;
}

std::optional<std::vector<Release>> parseUpdateFeed(std::string_view feed, std::string_view application) {
    const auto document = parseJson(feed, maxFeedBytes);
    if (!document || !document->is_object()) return std::nullopt;
    const auto* name = text(*document, "application");
    const auto list = document->find("releases");
    if (!name || *name != application || list == document->end() || !list->is_array()
        || list->size() > maxReleases)
        return std::nullopt;
    std::vector<Release> releases;
    for (const auto& value : *list) {
        auto release = parseRelease(value);
        if (!release) return std::nullopt;
        releases.push_back(std::move(*release));
    }
    return releases;
}

UpdateAnswer newestRelease(const std::vector<Release>& releases, const VersionNumber& running,
                           const HostSystem& system) {
    const Release* offered = nullptr;
    const Release* beyond = nullptr;
    for (const auto& release : releases) {
        if (compare(release.number, running) <= 0) continue;
        if (!release.number.isFinished() && running.isFinished()) continue;
        const auto least = release.minimumSystem.find(system.name);
        if (least == release.minimumSystem.end()) continue;
        const Release*& best = compare(least->second, system.version) <= 0 ? offered : beyond;
        if (!best || compare(release.number, best->number) > 0) best = &release;
    }
    if (offered) return {UpdateState::available, *offered};
    if (beyond) return {UpdateState::needsNewerSystem, *beyond};
    return {};
}

} // namespace tidwen
