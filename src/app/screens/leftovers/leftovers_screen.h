#pragma once

#include "app/models/sweep_tree.h"

#include <QWidget>
#include <functional>
#include <vector>

class QBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QStackedLayout;

namespace tidwen {

class ChoiceButton;
class DetailsPane;
class EmptyState;
class FindView;
class ScreenHeader;

/// What applications that are gone left behind, to choose from what goes.
class LeftoversScreen final : public QWidget {
  public:
    struct Actions {
        std::function<void()> sweep;
        std::function<void()> remove; ///< ask to remove what is chosen
        std::function<void(const Path&)> reveal;
    };
    LeftoversScreen(RemovalFlowModel& flow, const Texts& texts, const UserEnvironment& user, Actions actions);

    /// The stage of the flow, or what is chosen, is another one.
    void update();
    /// The list shows what the sweep ended with. It follows a moment after the flow.
    bool isReady() const { return result() != nullptr; }
    void search();

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QWidget* makeHeader();
    QWidget* makeContent(const UserEnvironment& user);
    QWidget* makeFooter();
    void addMenus();
    void setFilter(const std::function<void(LeftoverFilter&)>& change);
    void showNotices(const OrphanScanResult& result);
    void showContent();
    void showEmpty();
    void showFooter();
    const OrphanScanResult* result() const; ///< null while none is shown
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    RemovalFlowModel& flow_;
    const Texts& texts_;
    Actions actions_;
    SweepTree tree_;
    const OrphanScanResult* shown_ = nullptr; ///< of which the notices speak
    ScreenHeader* header_ = nullptr;
    std::vector<ChoiceButton*> menus_;
    QLineEdit* search_ = nullptr;
    QBoxLayout* notices_ = nullptr;
    QStackedLayout* content_ = nullptr;
    FindView* view_ = nullptr;
    DetailsPane* details_ = nullptr;
    EmptyState* empty_ = nullptr;
    QWidget* footer_ = nullptr;
    QLabel* count_ = nullptr;
    QPushButton* selectSafe_ = nullptr;
    QPushButton* remove_ = nullptr;
    Subscription following_;
};

} // namespace tidwen
