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
#include <unordered_map>
#include <vector>

namespace tidwen {

/// The grid's bands by last use.
enum class UsageBand {
    unused,     ///< not used for longer than the threshold
    earlier,    ///< used within the threshold, but not in the last 30 days
    recent,     ///< used in the last 30 days, or running
    unknown,    ///< no evidence
    background, ///< works without being opened, so its last use means little
};
UsageBand usageBand(const InstalledApp& app, UnusedThreshold threshold, Timestamp now);

/// What the home grid shows, and in which order.
struct HomeGridOptions {
    HomeGrouping grouping = HomeGrouping::lastUsed;
    HomeSort sort = HomeSort::automatic;
    UnusedThreshold threshold = UnusedThreshold::sixMonths;
    std::string query = {}; ///< searched in name, identifier and tags
    bool showsBackgroundAgents = true;
    bool onlyUnused = false;
    bool onlyProtected = false;
    std::optional<std::string> tag = {};
};

/// Names as they are searched, and as they are sorted in one language. Every key stroke in the search field
/// asks for those of all applications again, and they take long to work out, so they are kept.
class HomeNames {
  public:
    /// Forgets what is known in another language.
    void speak(const std::string& language);
    /// For searching.
    const std::string& folded(const std::string& name);
    /// Compares bytewise as people sort names. Lives until the language changes.
    const std::string& order(const std::string& name);

  private:
    std::string language_;
    std::unordered_map<std::string, std::string> folded_;
    std::unordered_map<std::string, std::string> orders_;
};

/// One heading with its applications.
struct HomeGroup {
    std::string id;    ///< "unused", "public.app-category.games", a tag, or "all"
    std::string title; ///< in the user's language; empty without grouping
    std::vector<SharedApp> apps;
    ByteSum size = {}; ///< of the applications whose size is known
};

/// Leaves out empty groups. Grouped by tag, an application appears under each of its tags.
std::vector<HomeGroup> arrangeHomeGrid(const std::vector<SharedApp>& apps, const HomeGridOptions& options,
                                       const AppTags& tags, const ProtectedApps& protectedApps,
                                       const Texts& texts, Timestamp now, HomeNames& names);

/// The title of the group with this ID.
std::string homeGroupTitle(HomeGrouping grouping, const std::string& groupID, const Texts& texts);

/// The display name of a raw "LSApplicationCategoryType"; an unknown one is "other".
std::string categoryTitle(const std::optional<std::string>& category, const Texts& texts);

} // namespace tidwen
