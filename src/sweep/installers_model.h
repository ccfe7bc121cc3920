#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "base/observable_list.h"
#include "base/texts.h"
#include "sweep/installer_scanner.h"

#include <functional>
#include <memory>
#include <set>
#include <vector>

namespace tidwen {

/// One line of the list of installers. Those whose application is installed stand first.
struct InstallerRow {
    InstallerFile file;
    bool isSelected = false;

    const Path& key() const { return file.url; }
    friend bool operator==(const InstallerRow&, const InstallerRow&) = default;
};

/// The disk images and packages in Downloads while they are looked at and chosen for removal. Belongs to the
/// main thread; the disk is read in the background.
class InstallersModel {
  public:
    struct Ports {
        const FileSystem& files;
        UserEnvironment user;
        const Texts& texts; ///< orders names; call `setOrder` when they are in another language
        Executor& main;
        Executor& background;
    };
    /// Gives the installed applications; called in the background.
    using Inventory = std::function<std::vector<InstalledApp>()>;
    enum class Order { size, name, date }; ///< largest, in the language's order, newest first

    InstallersModel(Ports ports, Inventory inventory);
    ~InstallersModel();
    InstallersModel(const InstallersModel&) = delete;
    InstallersModel& operator=(const InstallersModel&) = delete;

    Property<InstallerScanResult> result; ///< sizes of packages that are folders come in while it loads
    Property<bool> isLoading;
    Property<bool> hasLoaded; ///< the first look has ended
    Property<std::set<Path>> selection;
    ObservableList<InstallerRow> rows; ///< of the same files; sizes that come in move no row until all are in

    /// Looks again; `done` is called on the main thread when everything is published. While it looks, the
    /// look that is going on serves this call, too.
    void load(std::function<void()> done = {});

    Order order() const { return order_; }
    void setOrder(Order order);

    /// Ignored for what is not in the list.
    void toggleSelection(const Path& url);
    /// Chooses every installer whose application is installed, or none of them when all were chosen.
    void toggleSelectAllMatched();
    std::vector<InstallerFile> selectedFiles() const;
    /// The traces by which the removal flow removes them.
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
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
