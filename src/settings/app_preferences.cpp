#include "settings/app_preferences.h"

#include "base/message.h"
#include "base/property_list.h"
#include "base/text.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <variant>

namespace tidwen {

namespace {

// Stored texts in the order of the enumerators.
constexpr std::array<std::string_view, 4> groupingTexts = {"lastUsed", "category", "tag", "none"};
constexpr std::array<std::string_view, 4> sortTexts = {"auto", "name", "size", "lastUsed"};
constexpr std::array<std::string_view, 4> thresholdTexts = {"oneMonth", "threeMonths", "sixMonths",
                                                            "twelveMonths"};
constexpr std::array<std::string_view, 4> retentionTexts = {"never", "sevenDays", "thirtyDays", "ninetyDays"};

template<class Enum>
Enum parse(const std::array<std::string_view, 4>& texts, std::string_view raw, Enum fallback) {
    const auto found = std::find(texts.begin(), texts.end(), raw);
    return found == texts.end() ? fallback : static_cast<Enum>(std::distance(texts.begin(), found));
}

template<std::size_t N>
std::vector<std::string_view> list(const std::array<std::string_view, N>& texts) {
    return {texts.begin(), texts.end()};
}

const PreferenceDescription& describe(std::string_view name) {
    const auto& all = preferenceDescriptions();
    return *std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == name; });
}

std::string storedText(const Defaults& defaults, const PreferenceDescription& description) {
    const auto stored = defaults.value(std::string(description.key));
    const auto* text = stored ? stored->asString() : nullptr;
    return text ? *text : std::string(description.fallback);
}

/// As the system parses booleans: `defaults write` stores "YES", "1" or a number as typed.
std::optional<bool> asSwitch(const PropertyListValue& value) {
    if (const auto flag = value.asBool()) return flag;
    if (const auto number = value.asInteger()) return *number != 0;
    if (const auto* real = std::get_if<double>(&value.storage())) return *real != 0;
    const auto* text = value.asString();
    if (!text) return std::nullopt;
    const auto word = lowercased(*text);
    return word == "yes" || word == "y" || word == "true" || word == "t" || word == "1";
}

bool storedSwitch(const Defaults& defaults, const PreferenceDescription& description) {
    const auto stored = defaults.value(std::string(description.key));
    return (stored ? asSwitch(*stored) : std::nullopt).value_or(description.fallback == "true");
}

} // namespace

HomeGrouping homeGrouping(std::string_view raw) {
    return parse(groupingTexts, raw, HomeGrouping::lastUsed);
}
HomeSort homeSort(std::string_view raw) {
    return parse(sortTexts, raw, HomeSort::automatic);
}
UnusedThreshold unusedThreshold(std::string_view raw) {
    return parse(thresholdTexts, raw, UnusedThreshold::sixMonths);
}
QuarantineRetention quarantineRetention(std::string_view raw) {
    return parse(retentionTexts, raw, QuarantineRetention::never);
}

int days(UnusedThreshold threshold) {
    switch (threshold) {
    case UnusedThreshold::oneMonth:
        return 30;
    case UnusedThreshold::threeMonths:
        return 91;
    case UnusedThreshold::sixMonths:
        return 182;
    case UnusedThreshold::twelveMonths:
        return 365;
    }
    return 182;
}

int days(QuarantineRetention retention) {
    switch (retention) {
    case QuarantineRetention::never:
        return 0;
    case QuarantineRetention::sevenDays:
        return 7;
    case QuarantineRetention::thirtyDays:
        return 30;
    case QuarantineRetention::ninetyDays:
        return 90;
    }
    return 0;
}

std::optional<Message> describe(QuarantineRetention retention) {
    if (const int kept = days(retention); kept > 0)
        return Message{"quarantine.retention %lld", {std::to_string(kept)}};
    return std::nullopt;
}

const std::vector<PreferenceDescription>& preferenceDescriptions() {
    static const std::vector<PreferenceDescription> all = {
        {"language", "tidwen.language", "system", {"system"}},
        {"appearance", "tidwen.appearance", "auto", {"auto", "light", "dark"}},
        {"homeGrouping", "tidwen.homeGrouping", "lastUsed", list(groupingTexts)},
        {"homeSort", "tidwen.homeSort", "auto", list(sortTexts)},
        {"unusedThreshold", "tidwen.unusedThreshold", "sixMonths", list(thresholdTexts)},
        {"quarantineRetention", "tidwen.quarantineRetention", "never", list(retentionTexts)},
        {"catchTrashedApps", "tidwen.catchTrashedApps", "false", {"true", "false"}, true},
        {"hasCompletedOnboarding", "tidwen.onboardingCompleted", "false", {"true", "false"}, true},
        {"checksForUpdates", "tidwen.checksForUpdates", "false", {"true", "false"}, true},
        {"updateFeed", "tidwen.updateFeed", ""},
    };
    return all;
}

AppPreferences::AppPreferences(Defaults& defaults, std::vector<std::string> languages)
    : defaults_(defaults), languages_(std::move(languages)) {
    reload();
    for (const auto& [description, property] : texts())
        writers_.push_back(
            property.observe([this, key = std::string(description.key)](const std::string& value) {
                if (!reloading_) defaults_.setValue(key, PropertyListValue(value));
            }));
    for (const auto& [description, property] : switches())
        writers_.push_back(property.observe([this, key = std::string(description.key)](const bool& value) {
            if (!reloading_) defaults_.setValue(key, PropertyListValue(value));
        }));
}

std::vector<AppPreferences::Text> AppPreferences::texts() {
    return {{describe("language"), language},
            {describe("appearance"), appearance},
            {describe("homeGrouping"), homeGrouping},
            {describe("homeSort"), homeSort},
            {describe("unusedThreshold"), unusedThreshold},
            {describe("quarantineRetention"), quarantineRetention},
            {describe("updateFeed"), updateFeed}};
}

std::vector<AppPreferences::Switch> AppPreferences::switches() {
    return {{describe("catchTrashedApps"), catchTrashedApps},
            {describe("hasCompletedOnboarding"), hasCompletedOnboarding},
            {describe("checksForUpdates"), checksForUpdates}};
}

void AppPreferences::reload() {
    reloading_ = true;
    for (const auto& [description, property] : texts())
        property.set(storedText(defaults_, description));
    for (const auto& [description, property] : switches())
        property.set(storedSwitch(defaults_, description));
    reloading_ = false;
}

std::optional<std::string> AppPreferences::get(std::string_view name) const {
    auto& self = const_cast<AppPreferences&>(*this); // the lists contain references that `set` writes through
    for (const auto& [description, property] : self.texts())
        if (description.name == name) return property.get();
    for (const auto& [description, property] : self.switches())
        if (description.name == name) return property.get() ? "true" : "false";
    return std::nullopt;
}

std::vector<std::string> AppPreferences::values(const PreferenceDescription& description) const {
    std::vector<std::string> all(description.values.begin(), description.values.end());
    if (description.name == "language") all.insert(all.end(), languages_.begin(), languages_.end());
    return all;
}

bool AppPreferences::set(std::string_view name, std::string_view value) {
    const auto allowed = [&](const PreferenceDescription& description) {
        if (description.name != name) return false;
        const auto all = values(description);
        return all.empty() || std::find(all.begin(), all.end(), value) != all.end();
    };
    for (const auto& [description, property] : texts())
        if (allowed(description)) return property.set(std::string(value)), true;
    for (const auto& [description, property] : switches())
        if (allowed(description)) return property.set(value == "true"), true;
    return false;
}

} // namespace tidwen
