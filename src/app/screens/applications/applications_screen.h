#pragma once

#include "app/models/home_list.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "inventory/home_grid.h"
#include "inventory/home_grid_model.h"
#include "operations/removal_operation.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/protected_apps.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"

#include <QWidget>
#include <functional>
#include <string>
#include <vector>

class QBoxLayout;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QStackedLayout;

namespace tidwen {

class AppIcons;
class CardView;
class ChosenCards;
class EmptyState;
class ScreenHeader;

/// What is installed, in groups of cards; from here a removal begins.
class ApplicationsScreen final : public QWidget {
  public:
    struct Models {
        HomeGridModel& grid;
        AppPreferences& preferences;
        ProtectedApps& protectedApps;
        AppTags& tags;
        AppIcons& icons;
        const Texts& texts;
        const Clock& clock;
        std::function<void(const Path&)> reveal; ///< shows an item in its folder
        std::function<void(const QString&)> say; ///< above the screen
    };
    /// `look`: asked for what belongs to these applications.
    using Look = std::function<void(const std::vector<Path>&, RemovalMode)>;
    ApplicationsScreen(Models models, Look look, std::function<void(const InstalledApp&)> showPermissions);

    void search();
    /// What was chosen or searched for is done: no application is current until one is chosen again.
    void startAfresh();

  protected:
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QWidget* makeHeader();
    QWidget* makeFooter();
    QMenu* makeViewMenu();
    QMenu* makeFilterMenu();
    void addChoice(QMenu& menu, const char* key, bool isOn, std::function<void()> choose);
    void setOption(const std::function<void(HomeGridOptions&)>& change);
    void showMenuFor(const QPoint& point);
    std::vector<SharedApp> chosen() const;
    bool areProtected(const std::vector<SharedApp>& apps) const;
    void lookAt(const QModelIndex& index);
    void lookAtChosen(RemovalMode mode = RemovalMode::uninstall);
    void setProtected(bool areToBe);
    void editTags();
    void showDetails();
    void addTagChoices(QMenu& menu);
    void update();
    void showEmpty();
    void clearFilters();
    void showUnread();
    HomeGridModel::Inventory countShown() const;
    void updateFooter();
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    Models models_;
    Look look_;
    std::function<void(const InstalledApp&)> showPermissions_;
    HomeList list_;
    ScreenHeader* header_ = nullptr;
    QLineEdit* search_ = nullptr;
    CardView* cards_ = nullptr;
    ChosenCards* chosen_ = nullptr;
    EmptyState* empty_ = nullptr;
    QBoxLayout* notices_ = nullptr;
    std::vector<Path> shownUnread_; ///< in a notice
    QStackedLayout* content_ = nullptr;
    QLabel* count_ = nullptr;
    QLabel* sizes_ = nullptr;
    QPushButton* protect_ = nullptr;
    bool protects_ = true; ///< what its word says; the protection may change before it is pressed
    QPushButton* editTags_ = nullptr;
    QPushButton* primary_ = nullptr;
    std::vector<Subscription> following_;
};

} // namespace tidwen
