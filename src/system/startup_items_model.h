#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/message.h"
#include "base/observable.h"
#include "base/observable_list.h"
#include "base/path.h"
#include "base/texts.h"
#include "platform/file_system.h"
#include "platform/launchd.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/trace.h"
#include "system/startup_item.h"
#include "system/startup_item_scanner.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The state of a row's switch.
enum class SwitchState {
    none, ///< no switch is shown
    on,
    off,
    switching,      ///< a change is in progress
    systemSettings, ///< only the user can change it, in System Settings
};
std::string_view name(SwitchState state);

/// One row of the list of startup items, ready to draw; the item holds its owner.
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

/// The jobs that start on their own, for viewing, selecting for removal, and enabling or disabling. Main
/// thread only; slow work runs in the background and returns through the main executor.
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
    /// `inventory` is called in the background.
    using Inventory = StartupItemScanner::Inventory;
    StartupItemsModel(Ports ports, Inventory inventory);
    ~StartupItemsModel();
    StartupItemsModel(const StartupItemsModel&) = delete;
    StartupItemsModel& operator=(const StartupItemsModel&) = delete;

    Property<StartupScanResult> result;
    Property<bool> isLoading{true};
    Property<std::set<std::string>> selection;    ///< ids
    Property<std::set<std::string>> disabled;     ///< ids of disabled items
    Property<std::set<std::string>> switching;    ///< ids of items whose state is being changed
    Property<std::optional<Message>> toggleError; ///< of the last change that failed
    ObservableList<StartupItemRow>
        rows; ///< the rows that follow from all of these, in the order of the result

    /// Scans again; `done` is called on the main thread when everything is published. A call during a load
    /// joins it.
    void load(std::function<void()> done = {});
    /// Asks launchd again which jobs are disabled.
    void refreshDisabled(std::function<void()> done = {});

    void toggleSelection(const StartupItem& item);
    /// Selects every orphan, or none if all were selected.
    void toggleSelectAllOrphans();
    std::vector<StartupItem> selectedItems() const;
    /// Why the items selected now, by their property lists, have to stay when it is called: they have become
    /// another's or an application's. Scans again; for any thread while this model lives.
    using InUse = std::function<std::map<Path, Message>()>;
    InUse selectedInUse() const;
    /// The item with this ID, else all with this label: several property lists may have the same one.
    std::vector<const StartupItem*> itemsNamed(const std::string& labelOrID) const;

    /// Enables or disables one job; ignored where there is no switch and while a change is in progress.
    void setEnabled(const StartupItem& item, bool on, std::function<void()> done = {});

    SwitchState switchState(const StartupItem& item) const;
    /// Why a job has no switch here.
    std::optional<Message> whyNoSwitch(const StartupItem& item) const;
    /// Why a job cannot be removed on its own; nothing when it can.
    std::optional<Message> whyItStays(const StartupItem& item) const;
    bool isSelectable(const StartupItem& item) const { return !whyItStays(item); }
    bool isProtected(const StartupItem& item) const;
    /// The text under the label ("Belongs to Marlin Notes"), in the present language.
    std::string ownerText(const StartupItem& item) const;

  private:
    void follow();
    void endLoading();
    void dropUnselectable();
    void show();

    Ports ports_;
    Inventory inventory_;
    bool isBusy_ = false;                     ///< a load is in progress
    std::vector<std::function<void()>> done_; ///< of the calls that joined the load
    std::vector<Subscription> following_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< checked by results that arrive late
};

/// The trace with which a startup item is removed: its job unloaded and its property list moved.
std::optional<Trace> startupTrace(const StartupItem& item);

/// The items that launchd does not start: by its own override, else by "Disabled" in the property list.
std::set<std::string> disabledItems(const std::vector<StartupItem>& items, const Launchd& launchd,
                                    const FileSystem& files);

} // namespace tidwen
