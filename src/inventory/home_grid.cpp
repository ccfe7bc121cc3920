#include "inventory/home_grid.h"

#include "base/text.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

namespace tidwen {
namespace {

constexpr int recentDays = 30;
constexpr std::string_view categoryPrefix = "public.app-category.";
constexpr std::string_view otherCategory = "other";

// All that the system knows. A game's kind is more than a reader of the grid wants to know.
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

/// Decides which applications are shown.
class HomeFilter {
  public:
    HomeFilter(const HomeGridOptions& options, const AppTags& tags, const ProtectedApps& protectedApps,
               Timestamp now)
        : options_(options),
          tags_(tags),
          protected_(protectedApps),
          now_(now),
          query_(lowercased(composed(trimmed(options.query)))) {}

    bool passes(const InstalledApp& app) const {
        if (!options_.showsBackgroundAgents && app.isBackgroundAgent) return false;
        if (options_.onlyUnused && usageBand(app, options_.threshold, now_) != UsageBand::unused)
            return false;
        if (options_.onlyProtected && !protected_.contains(app.bundleID)) return false;
        const auto own = tags_.tags(app.bundleID);
        if (options_.tag && std::find(own.begin(), own.end(), *options_.tag) == own.end()) return false;
        if (query_.empty() || holds(app.name) || holds(app.bundleID)) return true;
        return std::any_of(own.begin(), own.end(), [&](const auto& tag) { return holds(tag); });
    }

  private:
    bool holds(const std::string& text) const {
        return lowercased(composed(text)).find(query_) != std::string::npos;
    }

    const HomeGridOptions& options_;
    const AppTags& tags_;
    const ProtectedApps& protected_;
    Timestamp now_;
    std::string query_;
};

void sortApps(std::vector<const InstalledApp*>& apps, HomeSort sort, const std::string& language) {
    const auto byName = [&](const InstalledApp* a, const InstalledApp* b) {
        return compareForDisplay(a->name, b->name, language) < 0;
    };
    std::stable_sort(apps.begin(), apps.end(), byName);
    if (sort == HomeSort::size)
        std::stable_sort(apps.begin(), apps.end(), [](const auto* a, const auto* b) {
            return a->sizeBytes.value_or(-1) > b->sizeBytes.value_or(-1);
        });
    if (sort == HomeSort::lastUsed)
        std::stable_sort(apps.begin(), apps.end(),
                         [](const auto* a, const auto* b) { return lastUsed(*a) > lastUsed(*b); });
}

/// What is not used is worth looking at by its size; everything else is looked up by its name.
HomeSort effectiveSort(HomeSort sort, HomeGrouping grouping, const std::string& groupID) {
    if (sort != HomeSort::automatic) return sort;
    const bool isUnused = grouping == HomeGrouping::lastUsed && groupID == bandName(UsageBand::unused);
    return isUnused ? HomeSort::size : HomeSort::name;
}

/// The headings that an application stands under, each with what orders it among the others.
std::vector<HomeGroup> headings(const InstalledApp& app, const HomeGridOptions& options, const AppTags& tags,
                                const Texts& texts, Timestamp now) {
    switch (options.grouping) {
    case HomeGrouping::none:
        return {{"all", "", {}, 0}};
    case HomeGrouping::lastUsed: {
        const std::string id(bandName(usageBand(app, options.threshold, now)));
        return {{id, texts.text("home.band." + id), {}, 0}};
    }
    case HomeGrouping::category: {
        const std::string id(shortCategory(app.category));
        return {{id == otherCategory ? id : std::string(categoryPrefix) + id,
                 categoryTitle(app.category, texts),
                 {},
                 0}};
    }
    case HomeGrouping::tag: {
        std::vector<HomeGroup> result;
        for (const auto& tag : tags.tags(app.bundleID))
            result.push_back({tag, tag, {}, 0});
        if (result.empty()) result.push_back({"", texts.text("home.group.untagged"), {}, 0});
        return result;
    }
    }
    return {};
}

void sortGroups(std::vector<HomeGroup>& groups, const HomeGridOptions& options, const std::string& language) {
    const auto rank = [&](const HomeGroup& group) {
        if (options.grouping == HomeGrouping::lastUsed)
            for (int band = 0; band <= static_cast<int>(UsageBand::background); ++band)
                if (group.id == bandName(static_cast<UsageBand>(band))) return band;
        return group.id.empty() || group.id == otherCategory ? 1 : 0; // what belongs nowhere comes last
    };
    std::stable_sort(groups.begin(), groups.end(), [&](const HomeGroup& a, const HomeGroup& b) {
        const int rankA = rank(a), rankB = rank(b);
        if (rankA != rankB) return rankA < rankB;
        return compareForDisplay(a.title, b.title, language) < 0;
    });
}

} // namespace

UsageBand usageBand(const InstalledApp& app, UnusedThreshold threshold, Timestamp now) {
    if (app.isBackgroundAgent || app.hasResidentHelper) return UsageBand::background;
    if (app.usage && app.usage->isRunning) return UsageBand::recent;
    if (!app.usage || !app.usage->evidence.date) return UsageBand::unknown;
    const auto age = now - *app.usage->evidence.date;
    if (age <= std::chrono::hours(24) * recentDays) return UsageBand::recent;
    return age <= std::chrono::hours(24) * days(threshold) ? UsageBand::earlier : UsageBand::unused;
}

std::string categoryTitle(const std::optional<std::string>& category, const Texts& texts) {
    return texts.text("home.category." + std::string(shortCategory(category)));
}

std::vector<HomeGroup> arrangeHomeGrid(const std::vector<InstalledApp>& apps, const HomeGridOptions& options,
                                       const AppTags& tags, const ProtectedApps& protectedApps,
                                       const Texts& texts, Timestamp now) {
    const HomeFilter filter(options, tags, protectedApps, now);
    std::map<std::string, HomeGroup> byID;
    for (const auto& app : apps) {
        if (!filter.passes(app)) continue;
        for (auto& heading : headings(app, options, tags, texts, now)) {
            auto& group = byID.try_emplace(heading.id, heading).first->second;
            group.apps.push_back(&app);
            group.bytes += app.sizeBytes.value_or(0);
        }
    }
    std::vector<HomeGroup> groups;
    for (auto& [id, group] : byID) {
        sortApps(group.apps, effectiveSort(options.sort, options.grouping, id), texts.language());
        groups.push_back(std::move(group));
    }
    sortGroups(groups, options, texts.language());
    return groups;
}

} // namespace tidwen
