#include "inventory/known_apps.h"

#include "base/json.h"
#include "base/text.h"
#include "base/timestamp.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using nlohmann::json;

constexpr std::chrono::milliseconds patience{200}; // skipping one store loses nothing

constexpr std::array<std::pair<UsageEvidence::Kind, std::string_view>, 3> evidenceNames = {
    {{UsageEvidence::Kind::launchRecord, "launchRecord"},
     {UsageEvidence::Kind::appData, "appData"},
     {UsageEvidence::Kind::none, "none"}}};

const json* member(const json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found == object.end() ? nullptr : &*found;
}

const std::string* textMember(const json& object, const char* key) {
    const auto* value = member(object, key);
    return value ? value->get_ptr<const json::string_t*>() : nullptr;
}

std::optional<std::int64_t> countMember(const json& object, const char* key) {
    const auto* value = member(object, key);
    if (!value || !value->is_number_integer()) return std::nullopt;
    const auto count = value->get<std::int64_t>();
    return count >= 0 ? std::optional(count) : std::nullopt;
}

bool isSet(const json& object, const char* key) {
    const auto* value = member(object, key);
    return value && value->is_boolean() && value->get<bool>();
}

std::optional<UsageEvidence> readUsage(const json& object) {
    const auto* kind = textMember(object, "evidence");
    const auto known = std::find_if(evidenceNames.begin(), evidenceNames.end(),
                                    [&](const auto& each) { return kind && each.second == *kind; });
    if (known == evidenceNames.end()) return std::nullopt;
    const auto* text = textMember(object, "lastUsed");
    const auto date = text ? parseIso8601(*text) : std::nullopt;
    if (date.has_value() == (known->first == UsageEvidence::Kind::none)) return std::nullopt;
    return UsageEvidence{known->first, date};
}

json writeApp(const KnownApp& app) {
    json object = {{"changed", app.changed}};
    if (app.bytes) object["bytes"] = *app.bytes;
    if (app.isPartial) object["isPartial"] = true;
    if (!app.usage) return object;
    for (const auto& [kind, name] : evidenceNames)
        if (kind == app.usage->kind) object["evidence"] = name;
    if (app.usage->date) object["lastUsed"] = iso8601(*app.usage->date);
    return object;
}

KnownApps readApps(const json& object) {
    KnownApps apps;
    if (!object.is_object() || object.size() > KnownAppsFile::maxApps) return apps;
    for (const auto& [path, value] : object.items())
        if (const auto changed = countMember(value, "changed"); changed && Path(path).isAbsolute())
            apps.emplace(path, KnownApp{*changed, countMember(value, "bytes"), readUsage(value),
                                        isSet(value, "isPartial")});
    return apps;
}

/// The entries of all Macs in the file, the most recently used first.
std::vector<json> readMacs(const SharedFile& file) {
    const auto text = file.read(KnownAppsFile::maxBytes);
    const auto document = text ? parseJson(*text, KnownAppsFile::maxBytes) : std::nullopt;
    const auto* macs = document ? member(*document, "macs") : nullptr;
    std::vector<json> found;
    if (macs && macs->is_array())
        for (const auto& mac : *macs)
            if (textMember(mac, "mac") && member(mac, "apps")) found.push_back(mac);
    return found;
}

} // namespace

KnownApps KnownAppsFile::read() const {
    for (const auto& mac : readMacs(file_))
        if (*textMember(mac, "mac") == mac_) return readApps(*member(mac, "apps"));
    return {};
}

bool KnownAppsFile::store(const KnownApps& apps) const {
    const auto lock = file_.lock(patience);
    if (!lock.isHeld()) return false;
    auto macs = readMacs(file_);
    std::erase_if(macs, [&](const json& mac) { return *textMember(mac, "mac") == mac_; });
    if (macs.size() >= maxMacs) macs.resize(maxMacs - 1);

    auto own = json::object();
    for (const auto& [path, app] : apps)
        if (own.size() < maxApps && isValidUtf8(path.string())) own[path.string()] = writeApp(app);
    macs.insert(macs.begin(), json{{"mac", mac_}, {"apps", std::move(own)}});
    auto text = writeJson({{"macs", macs}});
    if (text.size() > maxBytes) text = writeJson({{"macs", json::array({macs.front()})}});
    return text.size() <= maxBytes && file_.replace(text);
}

} // namespace tidwen
