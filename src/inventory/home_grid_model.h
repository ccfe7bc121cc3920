#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "base/observable_list.h"
#include "base/stop_token.h"
#include "inventory/app_inventory.h"
#include "inventory/home_grid.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

/// One line of the home grid: a heading, or an application below it.
struct HomeRow {
    std::string groupID;             ///< of the heading; `homeGroupTitle` gives its words
    std::optional<InstalledApp> app; ///< nothing: the heading itself
    bool isProtected = false;
    std::vector<std::string> tags = {};
    std::size_t count = 0; ///< of a heading: applications below it
    ByteSum size = {};     ///< of a heading: their sizes, as far as they are known

    std::pair<std::string, std::string> key() const {
        return {groupID, app ? app->url.string() : std::string()};
    }
    friend bool operator==(const HomeRow&, const HomeRow&) = default;
};

/// The home grid while it is filled, arranged and looked at: what is installed comes in as it is found, names
/// first, then last use, then sizes. Belongs to the main thread; the disk is read in the background.
class HomeGridModel {
  public:
    struct Ports {
        AppInventory& inventory; ///< used by this model alone
        AppPreferences& preferences;
        AppTags& tags;
        ProtectedApps& protectedApps;
        const Texts& texts; ///< orders headings; call `arrange` when they are in another language
        const Clock& clock;
        Executor& main;
        Executor& background;
    };

    enum class Phase {
        idle,      ///< nothing was looked for yet, or a look was called off before all were there
        listing,   ///< applications are coming in
        measuring, ///< all are there, sizes are coming in
        ready,
    };

    /// What is there, whatever the filter shows.
    struct Inventory {
        std::size_t count = 0;
        ByteSum size = {};                 ///< of those whose size is known
        std::vector<Path> unreadable = {}; ///< folders that may hold more
        std::uint64_t leftOut = 0; ///< files and folders that were not read: there is too much to read
        friend bool operator==(const Inventory&, const Inventory&) = default;
    };

    /// Groups and sorts as the preferences say, and follows them, the tags and the protected applications.
    explicit HomeGridModel(Ports ports);
    ~HomeGridModel();
    HomeGridModel(const HomeGridModel&) = delete;
    HomeGridModel& operator=(const HomeGridModel&) = delete;

    Property<Phase> phase;
    Property<Inventory> inventory;
    ObservableList<HomeRow> rows;

    /// Looks again; what is shown stays until it is found to be gone. Ends a look that is going on, whose
    /// `done` is called with that of this one.
    void load(std::function<void()> done = {});
    /// Ends a look; what was found stays. Its `done` is called.
    void cancel();
    /// Asks again who runs. No row moves.
    void refreshRunning(std::function<void()> done = {});

    const HomeGridOptions& options() const { return options_; }
    void setOptions(HomeGridOptions options);
    /// Puts every row where it belongs by now: sizes that come in move nothing by themselves.
    void arrange();

    const std::vector<InstalledApp>& apps() const { return apps_; }

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
    std::vector<InstalledApp> apps_;
    std::vector<std::function<void()>> done_; ///< of the looks that wait for their end
    bool isBusy_ = false;                     ///< the inventory is at work
    bool isAskedAgain_ = false;
    StopSource stop_;
    std::vector<Subscription> following_;
    std::shared_ptr<bool> run_;                                  ///< of one look: what it streams looks at it
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
