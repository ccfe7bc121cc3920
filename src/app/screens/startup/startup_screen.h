#pragma once

#include "app/models/row_filter.h"
#include "app/models/startup_list.h"
#include "app/widgets/list_screen.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/texts.h"
#include "system/startup_items_model.h"

#include <QPointer>

#include <functional>

namespace tidwen {

class AppIcons;
class Sheet;

/// What starts by itself: to switch on and off, and to remove.
class StartupScreen final : public ListScreen {
  public:
    struct Actions {
        std::function<void()> remove; ///< ask to remove what is chosen
        std::function<void(const Path&)> reveal;
        std::function<void()> openLoginItems; ///< in System Settings
    };
    /// What is passed outlives it.
    StartupScreen(StartupItemsModel& model, AppIcons& icons, const Texts& texts, Actions actions);

  protected:
    void searchFor(const QString& query) override;
    void refresh() override;
    void fill(QMenu& menu) override;

  private:
    void showEmpty();
    void showAction();
    void showError();
    const StartupItemRow* rowAt(const QModelIndex& index) const;
    /// Switches the item of a row, or shows where that is done.
    void act(const QModelIndex& index);
    QString actionWords(const StartupItemRow& row) const; ///< empty when there is nothing to switch

    StartupItemsModel& model_;
    Actions actions_;
    StartupList list_;
    RowFilter filter_;
    QPushButton* action_ = nullptr;
    QPushButton* selectOrphans_ = nullptr;
    QPointer<Sheet> errorSheet_;
};

} // namespace tidwen
