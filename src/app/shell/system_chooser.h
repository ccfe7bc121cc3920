#pragma once

#include "app/shell/mac_opener.h"
#include "base/executor.h"
#include "base/texts.h"
#include "settings/recent_volumes.h"

#include <QObject>
#include <QPointer>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QAction;
class QMenu;
class QWidget;

namespace tidwen {

class Sheet;

/// Which Mac to work on: this one, a volume opened lately, another volume, the sample.
class SystemChooser final : public QObject {
  public:
    struct Services {
        MacOpener& opener;
        RecentVolumes recent;
        const Texts& texts;
        Executor& main;
        Executor& background;
    };
    /// What happens then. None is called from within a call of this.
    struct Reactions {
        std::function<bool()> mayLeave; ///< the Mac that is open; says why not
        std::function<void(const QString& words)> begins;
        std::function<void(MacOpener::Opened)> opened;
        std::function<void(const QString& why)> refused;
    };
    SystemChooser(QWidget* window, Services services, Reactions reactions);

    /// To choose from; made anew whenever it opens.
    QMenu* menu() { return menu_; }

    void openRunning(const MacOpener::OpenMac& running);
    void open(const std::filesystem::path& folder, const std::optional<std::string>& home = {});
    void openSample();
    void chooseVolume();
    void chooseSampleFolder();

  private:
    void fill();
    void addRecent(const std::vector<RecentVolume>& volumes);
    void markMissing(const std::vector<RecentVolume>& volumes, const QList<QPointer<QAction>>& actions);
    void chooseFolder(const char* title, std::function<void(const QString&)> then);
    void chooseHome(const std::filesystem::path& folder, const std::vector<std::string>& homes);
    MacOpener::Then taken(std::filesystem::path folder = {});
    void take(MacOpener::Result result, const std::filesystem::path& folder);
    void drop(MacOpener::Result result);
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    QWidget* window_;
    Services services_;
    Reactions reactions_;
    std::optional<RecentVolume> open_; ///< the volume that is open, unless it is temporary
    int asked_ = 0;                    ///< how many Macs; only the last one is opened, whichever comes first
    QMenu* menu_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen
