#pragma once

#include "base/byte_sum.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/protected_apps.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// How long ago an application was used, as the grid sorts it into bands.
enum class UsageBand {
    unused,     ///< not for longer than the threshold
    earlier,    ///< within the threshold, but not in the last 30 days
    recent,     ///< in the last 30 days, or running now
    unknown,    ///< nothing tells
    background, ///< works without being opened, so its last use says little
};
UsageBand usageBand(const InstalledApp& app, UnusedThreshold threshold, Timestamp now);

/// What the home grid shows, and in which order.
struct HomeGridOptions {
    HomeGrouping grouping = HomeGrouping::lastUsed;
    HomeSort sort = HomeSort::automatic;
    UnusedThreshold threshold = UnusedThreshold::sixMonths;
    std::string query = {}; ///< looked for in name, identifier and tags
    bool showsBackgroundAgents = true;
    bool onlyUnused = false;
    bool onlyProtected = false;
    std::optional<std::string> tag = {};
};

/// One heading with its applications. Points into the list that it was made from.
struct HomeGroup {
    std::string id;    ///< "unused", "public.app-category.games", a tag, or "all"
    std::string title; ///< in the user's language; empty when nothing is grouped
    std::vector<const InstalledApp*> apps;
    ByteSum size = {}; ///< of the applications whose size is known
};

/// Groups without applications are left out. Grouped by tag, an application stands under each of its tags.
std::vector<HomeGroup> arrangeHomeGrid(const std::vector<InstalledApp>& apps, const HomeGridOptions& options,
                                       const AppTags& tags, const ProtectedApps& protectedApps,
                                       const Texts& texts, Timestamp now);

/// The words of the group with this id.
std::string homeGroupTitle(HomeGrouping grouping, const std::string& groupID, const Texts& texts);

/// What people call a raw "LSApplicationCategoryType"; an unknown one is "other".
std::string categoryTitle(const std::optional<std::string>& category, const Texts& texts);

} // namespace tidwen
