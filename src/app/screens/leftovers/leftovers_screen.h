#pragma once

#include "app/models/sweep_tree.h"
#include "app/widgets/list_screen.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "removal/removal_flow_model.h"
#include "sweep/leftover_filter.h"
#include "sweep/orphan_scanner.h"

#include <functional>
#include <vector>

namespace tidwen {

class ChoiceButton;
class DetailsPane;

/// What applications that are gone left behind, to choose from what goes.
class LeftoversScreen final : public ListScreen {
  public:
    struct Actions {
        std::function<void()> sweep;
        std::function<void()> remove; ///< ask to remove what is chosen
        std::function<void(const Path&)> reveal;
    };
    LeftoversScreen(RemovalFlowModel& flow, const Texts& texts, const UserEnvironment& user, Actions actions);

    /// The stage of the flow, or what is chosen, is another one.
    void refresh() override;
    /// The list shows what the sweep ended with. It follows a moment after the flow.
    bool isReady() const { return result() != nullptr; }

  protected:
    void searchFor(const QString& query) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void addMenus();
    void setFilter(const std::function<void(LeftoverFilter&)>& change);
    QStringList reasons(const OrphanScanResult& result) const;
    void showContent();
    void showEmpty();
    void showFooter();
    const OrphanScanResult* result() const; ///< null while none is shown

    RemovalFlowModel& flow_;
    Actions actions_;
    SweepTree tree_;
    const OrphanScanResult* shown_ = nullptr; ///< of which the notices speak
    std::vector<ChoiceButton*> menus_;
    DetailsPane* details_ = nullptr;
    QPushButton* selectSafe_ = nullptr;
};

} // namespace tidwen
