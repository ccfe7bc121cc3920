#pragma once

#include "base/byte_sum.h"
#include "base/executor.h"
#include "base/observable.h"
#include "base/observable_list.h"
#include "base/path.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "inventory/app_inventory.h"
#include "inventory/home_grid.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/protected_apps.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace tidwen {

/// One row of the home grid: a heading, or an application below it.
struct HomeRow {
    std::string groupID; ///< of the heading; see `homeGroupTitle`
    SharedApp app;       ///< null for a heading
    bool isProtected = false;
    std::vector<std::string> tags = {};
    std::size_t count = 0; ///< of a heading: applications below it
    ByteSum size = {};     ///< of a heading: their sizes, as far as they are known

    /// Valid as long as the row.
    std::pair<std::string_view, std::string_view> key() const {
        return {groupID, app ? std::string_view(app->url.string()) : std::string_view()};
    }
    friend bool operator==(const HomeRow& a, const HomeRow& b) {
        const bool isSame = a.app == b.app || (a.app && b.app && *a.app == *b.app);
        return isSame
               && std::tie(a.groupID, a.isProtected, a.tags, a.count, a.size)
                      == std::tie(b.groupID, b.isProtected, b.tags, b.count, b.size);
    }
};

/// The home grid while it is loaded and arranged: applications arrive as they are found, first their names,
/// then last use, then sizes. Main thread only; the disk is read in the background.
class HomeGridModel {
  public:
    struct Ports {
        AppInventory& inventory; ///< used by this model only
        AppPreferences& preferences;
        AppTags& tags;
        ProtectedApps& protectedApps;
        const Texts& texts; ///< orders headings; call `arrange` after a change of language
        const Clock& clock;
        Executor& main;
        Executor& background;
    };

    enum class Phase {
        idle,      ///< not loaded yet, or a load was cancelled before all applications arrived
        listing,   ///< applications are coming in
        measuring, ///< all applications have arrived, sizes are arriving
        ready,
    };

    /// Everything loaded, regardless of the filter.
    struct Inventory {
        std::size_t count = 0;
        ByteSum size = {};                 ///< of those whose size is known
        std::vector<Path> unreadable = {}; ///< folders that may hold more
        std::uint64_t leftOut = 0; ///< files and folders that were not read: there is too much to read
        friend bool operator==(const Inventory&, const Inventory&) = default;
    };

    /// Groups and sorts by the preferences and follows changes of preferences, tags and protected
    /// applications.
    explicit HomeGridModel(Ports ports);
    ~HomeGridModel();
    HomeGridModel(const HomeGridModel&) = delete;
    HomeGridModel& operator=(const HomeGridModel&) = delete;

    Property<Phase> phase;
    Property<Inventory> inventory;
    ObservableList<HomeRow> rows;

    /// Loads again; applications stay visible until they are found to be gone. Ends a load in progress, whose
    /// `done` is called together with this one's.
    void load(std::function<void()> done = {});
    /// Ends a load and calls its `done`; what was found stays.
    void cancel();
    /// Updates which applications are running. Moves no row.
    void refreshRunning(std::function<void()> done = {});

    const HomeGridOptions& options() const { return options_; }
    void setOptions(HomeGridOptions options);
    /// Sorts every row by its present values. Arriving sizes move nothing before the last one is there.
    void arrange();

    const std::vector<SharedApp>& apps() const { return apps_; }

  private:
    void list();
    void measure();
    void end(Phase reached);
    void takeStreamed(std::vector<InstalledApp> found);
    void takeSizes(const std::vector<InstalledApp>& measured);
    void updateShown();
    void countInventory();
    void follow();

    Ports ports_;
    HomeGridOptions options_;
    HomeNames names_;
    std::vector<SharedApp> apps_;
    std::vector<std::function<void()>> done_; ///< of the loads in progress
    bool isBusy_ = false;                     ///< the inventory is in use
    bool isAskedAgain_ = false;
    StopSource stop_;
    std::vector<Subscription> following_;
    std::shared_ptr<bool> run_;                                  ///< of one load: checked by what it streams
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< checked by results that arrive late
};

} // namespace tidwen
