#include "inventory/home_grid.h"

#include "base/text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <map>
#include <string_view>
#include <utility>

namespace tidwen {
namespace {

constexpr int recentDays = 30;
constexpr std::string_view categoryPrefix = "public.app-category.";
constexpr std::string_view otherCategory = "other";

// All categories of the system. Genres of games are too detailed for the grid.
constexpr std::array<std::string_view, 21> categories = {
    "business",    "developer-tools", "education",       "entertainment",
    "finance",     "games",           "graphics-design", "healthcare-fitness",
    "lifestyle",   "medical",         "music",           "news",
    "photography", "productivity",    "reference",       "social-networking",
    "sports",      "travel",          "utilities",       "video",
    "weather"};

std::string_view shortCategory(const std::optional<std::string>& category) {
    if (!category || !category->starts_with(categoryPrefix)) return otherCategory;
    auto name = std::string_view(*category).substr(categoryPrefix.size());
    if (name.ends_with("-games")) name = "games";
    const auto found = std::find(categories.begin(), categories.end(), name);
    return found == categories.end() ? otherCategory : *found;
}

std::string_view bandName(UsageBand band) {
    switch (band) {
    case UsageBand::unused:
        return "unused";
    case UsageBand::earlier:
        return "earlier";
    case UsageBand::recent:
        return "recent";
    case UsageBand::unknown:
        return "unknown";
    case UsageBand::background:
        return "background";
    }
    return "unknown";
}

Timestamp lastUsed(const InstalledApp& app) {
    return app.usage && app.usage->evidence.date ? *app.usage->evidence.date : Timestamp{};
}

/// Determines which applications are shown.
class HomeFilter {
  public:
    HomeFilter(const HomeGridOptions& options, const AppTags& tags, const ProtectedApps& protectedApps,
               Timestamp now, HomeNames& names)
        : options_(options),
          tags_(tags),
          protected_(protectedApps),
          now_(now),
          names_(names),
          query_(folded(trimmed(options.query))) {}

    bool passes(const InstalledApp& app) const {
        if (!options_.showsBackgroundAgents && app.isBackgroundAgent) return false;
        if (options_.onlyUnused && usageBand(app, options_.threshold, now_) != UsageBand::unused)
            return false;
        if (options_.onlyProtected && !protected_.contains(app.bundleID)) return false;
        if (options_.tag && !tags_.isTagged(app.bundleID, *options_.tag)) return false;
        if (query_.empty() || holds(app.name) || holds(app.bundleID)) return true;
        const auto own = tags_.tags(app.bundleID);
        return std::any_of(own.begin(), own.end(), [&](const auto& tag) { return holds(tag); });
    }

  private:
    bool holds(const std::string& text) const {
        return names_.folded(text).find(query_) != std::string::npos;
    }

    const HomeGridOptions& options_;
    const AppTags& tags_;
    const ProtectedApps& protected_;
    Timestamp now_;
    HomeNames& names_;
    std::string query_;
};

void sortByName(std::vector<SharedApp>& apps, HomeNames& names) {
    std::vector<std::pair<const std::string*, SharedApp>> keyed;
    keyed.reserve(apps.size());
    for (auto& app : apps)
        keyed.emplace_back(&names.order(app->name), std::move(app));
    std::ranges::stable_sort(
        keyed, std::less{}, [](const auto& each) -> const auto& { return *each.first; });
    std::ranges::transform(keyed, apps.begin(), [](auto& each) { return std::move(each.second); });
}

void sortApps(std::vector<SharedApp>& apps, HomeSort sort, HomeNames& names) {
    sortByName(apps, names);
    if (sort == HomeSort::size)
        std::stable_sort(apps.begin(), apps.end(), [](const auto& a, const auto& b) {
            return a->sizeBytes.value_or(-1) > b->sizeBytes.value_or(-1);
        });
    if (sort == HomeSort::lastUsed)
        std::stable_sort(apps.begin(), apps.end(),
                         [](const auto& a, const auto& b) { return lastUsed(*a) > lastUsed(*b); });
}

/// Unused applications are most useful sorted by size; all others are looked up by name.
HomeSort effectiveSort(HomeSort sort, HomeGrouping grouping, const std::string& groupID) {
    if (sort != HomeSort::automatic) return sort;
    const bool isUnused = grouping == HomeGrouping::lastUsed && groupID == bandName(UsageBand::unused);
    return isUnused ? HomeSort::size : HomeSort::name;
}

/// The groups of an application.
std::vector<std::string> groupIDs(const InstalledApp& app, const HomeGridOptions& options,
                                  const AppTags& tags, Timestamp now) {
    switch (options.grouping) {
    case HomeGrouping::none:
        return {"all"};
    case HomeGrouping::lastUsed:
        return {std::string(bandName(usageBand(app, options.threshold, now)))};
    case HomeGrouping::category: {
        const auto category = shortCategory(app.category);
        return {std::string(category == otherCategory ? "" : categoryPrefix) + std::string(category)};
    }
    case HomeGrouping::tag:
        if (auto own = tags.tags(app.bundleID); !own.empty()) return own;
        return {""};
    }
    return {};
}

void sortGroups(std::vector<HomeGroup>& groups, const HomeGridOptions& options, const std::string& language) {
    const auto rank = [&](const HomeGroup& group) {
        if (options.grouping == HomeGrouping::lastUsed)
            for (int band = 0; band <= static_cast<int>(UsageBand::background); ++band)
                if (group.id == bandName(static_cast<UsageBand>(band))) return band;
        return group.id.empty() || group.id == otherCategory ? 1 : 0; // items without a group come last
    };
    std::stable_sort(groups.begin(), groups.end(), [&](const HomeGroup& a, const HomeGroup& b) {
        const int rankA = rank(a), rankB = rank(b);
        if (rankA != rankB) return rankA < rankB;
        return compareForDisplay(a.title, b.title, language) < 0;
    });
}

} // namespace

void HomeNames::speak(const std::string& language) {
    if (std::exchange(language_, language) != language) orders_.clear();
}

const std::string& HomeNames::folded(const std::string& name) {
    const auto [known, isNew] = folded_.try_emplace(name);
    if (isNew) known->second = tidwen::folded(name);
    return known->second;
}

const std::string& HomeNames::order(const std::string& name) {
    const auto [known, isNew] = orders_.try_emplace(name);
    if (isNew) known->second = displayOrderKey(name, language_);
    return known->second;
}

UsageBand usageBand(const InstalledApp& app, UnusedThreshold threshold, Timestamp now) {
    if (app.isBackgroundAgent || app.hasResidentHelper) return UsageBand::background;
    if (app.usage && app.usage->isRunning) return UsageBand::recent;
    if (!app.usage || !app.usage->evidence.date) return UsageBand::unknown;
    const auto age = now - *app.usage->evidence.date;
    if (age <= std::chrono::hours(24) * recentDays) return UsageBand::recent;
    return age <= std::chrono::hours(24) * days(threshold) ? UsageBand::earlier : UsageBand::unused;
}

std::string homeGroupTitle(HomeGrouping grouping, const std::string& groupID, const Texts& texts) {
    switch (grouping) {
    case HomeGrouping::none:
        return {};
    case HomeGrouping::lastUsed:
        return texts.text("home.band." + groupID);
    case HomeGrouping::category:
        return categoryTitle(groupID, texts);
    case HomeGrouping::tag:
        return groupID.empty() ? texts.text("home.group.untagged") : groupID;
    }
    return {};
}

std::string categoryTitle(const std::optional<std::string>& category, const Texts& texts) {
    return texts.text("home.category." + std::string(shortCategory(category)));
}

std::vector<HomeGroup> arrangeHomeGrid(const std::vector<SharedApp>& apps, const HomeGridOptions& options,
                                       const AppTags& tags, const ProtectedApps& protectedApps,
                                       const Texts& texts, Timestamp now, HomeNames& names) {
    names.speak(texts.language());
    const HomeFilter filter(options, tags, protectedApps, now, names);
    std::map<std::string, HomeGroup> byID;
    for (const auto& app : apps) {
        if (!filter.passes(*app)) continue;
        for (const auto& id : groupIDs(*app, options, tags, now)) {
            auto& group = byID[id];
            group.apps.push_back(app);
            group.size.add(app->sizeBytes, app->isSizePartial);
        }
    }
    std::vector<HomeGroup> groups;
    for (auto& [id, group] : byID) {
        group.id = id;
        group.title = homeGroupTitle(options.grouping, id, texts);
        sortApps(group.apps, effectiveSort(options.sort, options.grouping, id), names);
        groups.push_back(std::move(group));
    }
    sortGroups(groups, options, texts.language());
    return groups;
}

} // namespace tidwen
