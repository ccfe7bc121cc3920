#pragma once

#include "app/models/review_tree.h"
#include "base/path.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "removal/removal_flow_model.h"
#include "scan/applications/app_target.h"
#include "scan/matching/trace.h"
#include "sweep/leftover_filter.h"
#include "sweep/leftover_tree.h"

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace tidwen {

class AppIcons;
class DetailsPane;
class RowView;
class ScreenHeader;
class SizeBar;
class Tile;
struct UnseenWords;

/// What was found of the applications, to choose from what goes.
class ReviewScreen final : public QWidget {
  public:
    struct Actions {
        std::function<void()> remove; ///< ask to remove what is chosen
        std::function<void()> rescan;
        std::function<void(const Path&)> reveal;
        std::function<void(const AppTarget&)> showPermissions;
        std::function<void(SettingsPane)> openPane; ///< none: there are no settings to open
        std::function<bool()> hasFullDiskAccess;    ///< asked where there are settings to open
        std::function<bool(const AppTarget&)> isRunning;
    };
    ReviewScreen(RemovalFlowModel& flow, AppIcons& icons, const Texts& texts, UserEnvironment user,
                 Actions actions);

    /// Other findings, or the trees of another filter.
    void update();
    /// What is removed and what stays, of the same findings.
    void showSelection();
    /// Full Disk Access was given since: searching again finds more.
    void showGrantedAccess();
    void search();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QWidget* makeHeader();
    QWidget* makeFooter();
    void showPermissions(const Trace& trace);
    void showHeader();
    void showNotices();
    void addUnseen(const UnseenWords& unseen);
    void showSizes();
    void showFooter();
    QStringList whatStays() const;
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    RemovalFlowModel& flow_;
    AppIcons& icons_;
    const Texts& texts_;
    Actions actions_;
    ReviewTree tree_;
    /// Whose rows the tree points into. Kept: another list might lie where one that is gone lay.
    std::vector<std::shared_ptr<const LeftoverList>> shown_;
    int shownRows_ = -1;
    LeftoverFilter shownFilter_;
    bool isAccessNew_ = false; ///< given since the search
    ScreenHeader* header_ = nullptr;
    std::vector<Tile*> tiles_; ///< of the first applications
    QPushButton* uninstall_ = nullptr;
    QPushButton* reset_ = nullptr;
    QLineEdit* search_ = nullptr;
    SizeBar* sizes_ = nullptr;
    QBoxLayout* notices_ = nullptr;
    RowView* view_ = nullptr;
    DetailsPane* details_ = nullptr;
    QLabel* going_ = nullptr;
    QLabel* staying_ = nullptr;
    QPushButton* remove_ = nullptr;
};

} // namespace tidwen
