#include "app/models/chosen_cards.h"

#include "app/models/home_list.h"
#include "inventory/home_grid_model.h"

namespace tidwen {

/// Rows that go are set aside before the base deselects them, so the base has to hear of them last.
ChosenCards::ChosenCards(HomeList& list, const HomeGridModel& grid, QObject* parent)
    : QItemSelectionModel(nullptr, parent), list_(list), grid_(grid) {
    connect(&list, &QAbstractItemModel::rowsAboutToBeRemoved, this,
            [this](const QModelIndex&, int first, int last) { setAside(first, last); });
    connect(&list, &QAbstractItemModel::modelAboutToBeReset, this, [this] { setAllAside(); });
    setModel(&list);
    connect(&list, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) { showAgain(first, last); });
}

ChosenCards::Choice ChosenCards::choice() const {
    Choice choice;
    std::unordered_set<std::string> shown; // one may stand under two tags
    for (const auto& index : selectedIndexes())
        if (const auto app = list_.row(index).app; app && shown.insert(app->url.string()).second)
            choice.apps.push_back(app);
    if (hidden_.empty()) return choice;
    for (const auto& app : grid_.apps())
        if (hidden_.contains(app->url.string()) && !shown.contains(app->url.string())) {
            choice.apps.push_back(app);
            ++choice.hidden;
        }
    return choice;
}

void ChosenCards::forget() {
    select(QItemSelection(), Clear);
}

void ChosenCards::select(const QItemSelection& selection, SelectionFlags command) {
    if (command.testFlag(Clear)) hidden_.clear();
    if (!hidden_.empty())
        for (const auto& index : selection.indexes())
            if (const auto& app = list_.row(index).app) hidden_.erase(app->url.string());
    QItemSelectionModel::select(selection, command);
}

/// Called for every reset of the list, by the list and by the view.
void ChosenCards::reset() {
    setAllAside();
    QItemSelectionModel::reset();
    showAgain(0, list_.rowCount() - 1);
}

void ChosenCards::setAside(int first, int last) {
    if (!hasSelection()) return;
    for (int i = first; i <= last; ++i)
        if (const auto index = list_.index(i); isSelected(index))
            hidden_.insert(list_.row(index).app->url.string());
}

void ChosenCards::setAllAside() {
    for (const auto& index : selectedIndexes())
        hidden_.insert(list_.row(index).app->url.string());
    QItemSelectionModel::select(QItemSelection(), Clear); // not ours, which would forget them
}

void ChosenCards::showAgain(int first, int last) {
    QItemSelection back;
    for (int i = first; i <= last && !hidden_.empty(); ++i) {
        const auto index = list_.index(i);
        const auto& app = list_.row(index).app;
        if (app && hidden_.erase(app->url.string()) > 0) back.select(index, index);
    }
    if (!back.isEmpty()) QItemSelectionModel::select(back, Select);
}

} // namespace tidwen
