#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "base/observable_list.h"
#include "base/path.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_app.h"
#include "scan/matching/trace.h"
#include "sweep/installer_scanner.h"

#include <functional>
#include <memory>
#include <set>
#include <vector>

namespace tidwen {

/// One row of the list of installers. Those whose application is installed come first.
struct InstallerRow {
    InstallerFile file;
    bool isSelected = false;

    const Path& key() const { return file.url; }
    friend bool operator==(const InstallerRow&, const InstallerRow&) = default;
};

/// The disk images and packages in Downloads, for viewing and choosing which to remove. Main thread only; the
/// disk is read in the background.
class InstallersModel {
  public:
    struct Ports {
        const FileSystem& files;
        UserEnvironment user;
        const Texts& texts; ///< orders names; call `setOrder` after a change of language
        Executor& main;
        Executor& background;
    };
    /// Returns the installed applications; called in the background.
    using Inventory = std::function<std::vector<InstalledApp>()>;
    enum class Order { size, name, date }; ///< largest first, by name in the language's order, newest first

    InstallersModel(Ports ports, Inventory inventory);
    ~InstallersModel();
    InstallersModel(const InstallersModel&) = delete;
    InstallersModel& operator=(const InstallersModel&) = delete;

    Property<InstallerScanResult> result; ///< sizes of packages that are folders arrive while it loads
    Property<bool> isLoading;
    Property<bool> hasLoaded; ///< the first load has ended
    Property<std::set<Path>> selection;
    ObservableList<InstallerRow> rows; ///< of the same files; arriving sizes move no row until all are in

    /// Loads again; `done` is called on the main thread when everything is published. A call during a load
    /// joins it.
    void load(std::function<void()> done = {});

    Order order() const { return order_; }
    void setOrder(Order order);

    /// Ignored for what is not in the list.
    void toggleSelection(const Path& url);
    /// Selects every installer whose application is installed, or none of them if all were selected.
    void toggleSelectAllMatched();
    std::vector<InstallerFile> selectedFiles() const;
    /// The traces with which the removal flow removes them.
    std::vector<Trace> selectedTraces() const;

  private:
    struct Size {
        Path url;
        TreeSize size;
    };

    void measure();
    void takeSizes(const std::vector<Size>& sizes);
    void endLoading();
    void select(std::set<Path> chosen);
    void arrange();
    void showValues();

    Ports ports_;
    Inventory inventory_;
    Order order_ = Order::size;
    std::vector<std::function<void()>> done_;
    StopSource stop_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< checked by results that arrive late
};

} // namespace tidwen
