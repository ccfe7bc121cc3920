#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/message.h"
#include "base/observable.h"
#include "base/observable_list.h"
#include "base/texts.h"
#include "platform/file_system.h"
#include "platform/launchd.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/trace.h"
#include "system/startup_item_scanner.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

/// The switch of one row.
enum class SwitchState {
    none, ///< no switch is shown
    on,
    off,
    switching,      ///< a change is in flight
    systemSettings, ///< only the user can switch it, in System Settings
};
std::string_view name(SwitchState state);

/// One line of the list of startup items, as it is drawn: whose it is stands in the item.
struct StartupItemRow {
    StartupItem item;
    SwitchState switchState = SwitchState::none;
    bool isOff = false; ///< launchd does not start it, whether or not it has a switch
    bool isSelected = false;
    bool isSelectable = false;
    bool isProtected = false;

    std::string key() const { return item.id(); }
    friend bool operator==(const StartupItemRow&, const StartupItemRow&) = default;
};

/// Everything a person can do with the jobs that start on their own: look, choose for removal, switch off and
/// on. Belongs to the main thread; the slow work runs in the background and comes back through the main
/// executor.
class StartupItemsModel {
  public:
    struct Ports {
        const FileSystem& files;
        Launchd& launchd;
        const StartupItemScanner& scanner;
        ProtectedApps& protectedApps;
        const Texts& texts;
        Executor& main;
        Executor& background;
        Log& log;
    };
    /// Gives the installed applications; called in the background.
    using Inventory = std::function<std::vector<InstalledApp>()>;

    StartupItemsModel(Ports ports, Inventory inventory);
    ~StartupItemsModel();
    StartupItemsModel(const StartupItemsModel&) = delete;
    StartupItemsModel& operator=(const StartupItemsModel&) = delete;

    Property<StartupScanResult> result;
    Property<bool> isLoading{true};
    Property<std::set<std::string>> selection;    ///< ids
    Property<std::set<std::string>> disabled;     ///< ids of what is switched off
    Property<std::set<std::string>> switching;    ///< ids whose switch is being changed
    Property<std::optional<Message>> toggleError; ///< of the last switch that failed
    ObservableList<StartupItemRow> rows;          ///< what all of these come to, in the order of the result

    /// Scans again; `done` is called on the main thread when everything is published. A load that is going
    /// on serves this call, too.
    void load(std::function<void()> done = {});
    /// Asks launchd again what is switched off.
    void refreshDisabled(std::function<void()> done = {});

    void toggleSelection(const StartupItem& item);
    /// Chooses every orphan, or none when all were chosen.
    void toggleSelectAllOrphans();
    std::vector<StartupItem> selectedItems() const;
    /// The item of this id, else all with this label: several property lists may bear the same.
    std::vector<const StartupItem*> itemsNamed(const std::string& labelOrID) const;

    /// Switches one job; ignored where there is no switch and while a change of it is in flight.
    void setEnabled(const StartupItem& item, bool on, std::function<void()> done = {});

    SwitchState switchState(const StartupItem& item) const;
    /// Why a job has no switch here.
    std::optional<Message> whyNoSwitch(const StartupItem& item) const;
    bool isSelectable(const StartupItem& item) const;
    bool isProtected(const StartupItem& item) const;
    /// What stands under the label ("Belongs to Marlin Notes"), in the language of now.
    std::string ownerText(const StartupItem& item) const;

  private:
    void follow();
    void endLoading();
    void dropUnselectable();
    void show();

    Ports ports_;
    Inventory inventory_;
    bool isBusy_ = false;                     ///< a load is going on
    std::vector<std::function<void()>> done_; ///< of the loads that wait for its end
    std::vector<Subscription> following_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

/// The trace by which a startup item is removed: its job unloaded and its property list moved.
std::optional<Trace> startupTrace(const StartupItem& item);

/// Which of the items launchd starts no more: its own word first, else the property list's "Disabled".
std::set<std::string> disabledItems(const std::vector<StartupItem>& items, const Launchd& launchd,
                                    const FileSystem& files);

} // namespace tidwen
