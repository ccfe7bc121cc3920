#pragma once

#include "app/models/installer_list.h"
#include "app/models/row_filter.h"
#include "app/widgets/list_screen.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/texts.h"
#include "sweep/installers_model.h"

#include <functional>

namespace tidwen {

class AppIcons;
class ChoiceButton;

/// The disk images and packages in Downloads, to choose from what goes.
class InstallersScreen final : public ListScreen {
  public:
    struct Actions {
        std::function<void()> remove; ///< ask to remove what is chosen
        std::function<void(const Path&)> reveal;
        /// What helps when Downloads cannot be read.
        QString remedy;
        std::function<void()> help;
    };
    /// What is passed outlives it.
    InstallersScreen(InstallersModel& model, AppIcons& icons, const Texts& texts, Actions actions);

  protected:
    void searchFor(const QString& query) override;
    void refresh() override;
    void fill(QMenu& menu) override;

  private:
    ChoiceButton* makeOrderMenu();
    void showEmpty();

    InstallersModel& model_;
    Actions actions_;
    InstallerList list_;
    RowFilter filter_;
    ChoiceButton* order_ = nullptr;
    QPushButton* selectMatched_ = nullptr;
};

} // namespace tidwen
