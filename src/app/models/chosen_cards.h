#pragma once

#include "scan/applications/installed_app.h"

#include <QItemSelectionModel>

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

namespace tidwen {

class HomeGridModel;
class HomeList;

/// Which applications are chosen. One that a search or a filter hides stays chosen until something is chosen
/// without it, so that several can be gathered by searching for one after the other.
class ChosenCards final : public QItemSelectionModel {
  public:
    struct Choice {
        std::vector<SharedApp> apps; ///< each once, those shown come first
        std::size_t hidden = 0;      ///< how many of them are not shown
    };

    /// `list` shows `grid`; both outlive it.
    ChosenCards(HomeList& list, const HomeGridModel& grid, QObject* parent);

    Choice choice() const;
    void forget();

    using QItemSelectionModel::select;
    void select(const QItemSelection& selection, SelectionFlags command) override;
    void reset() override;

  private:
    void setAside(int first, int last);
    void setAllAside();
    void showAgain(int first, int last);

    HomeList& list_;
    const HomeGridModel& grid_;
    std::unordered_set<std::string> hidden_; ///< bundles that are chosen and in no row
};

} // namespace tidwen
