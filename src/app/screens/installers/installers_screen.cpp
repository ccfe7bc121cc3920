#include "app/screens/installers/installers_screen.h"

#include "app/models/app_icons.h"
#include "app/widgets/card_row_delegate.h"
#include "app/widgets/choice_button.h"
#include "app/widgets/empty_state.h"
#include "app/widgets/screen_header.h"
#include "app/widgets/words.h"
#include "base/byte_sum.h"
#include "base/texts.h"
#include "sweep/installers_model.h"

#include <QMenu>
#include <algorithm>
#include <utility>
#include <vector>

namespace tidwen {

InstallersScreen::InstallersScreen(InstallersModel& model, AppIcons& icons, const Texts& texts,
                                   Actions actions)
    : ListScreen(texts,
                 {words(texts, "installers.title"), "installers", "installers",
                  new CardRowDelegate(CardRowDelegate::Boxes::leading, icons)},
                 actions.remove),
      model_(model),
      actions_(std::move(actions)),
      list_(model, texts),
      filter_(list_) {
    header().setLine(text("installers.subtitle"));
    nameFooter("installers.selectionCount", "installers.removeButton");
    addControl(order_ = makeOrderMenu());
    selectMatched_ =
        addButton("installers.selectMatched", "select matched", [this] { model_.toggleSelectAllMatched(); });
    setModel(filter_);
    follow(model_.result, model_.isLoading, model_.hasLoaded, model_.selection);
    keep(model_.rows.changed.connect([this](const auto&) { refresh(); }));
    refresh();
}

ChoiceButton* InstallersScreen::makeOrderMenu() {
    return new ChoiceButton(text("orphans.filter.sort"), [this] {
        using Order = InstallersModel::Order;
        std::vector<ChoiceButton::Choice> choices;
        for (const auto& [order, key] : {std::pair(Order::size, "orphans.filter.sort.largest"),
                                         std::pair(Order::name, "orphans.filter.sort.name"),
                                         std::pair(Order::date, "installers.newest")})
            choices.push_back({text(key), model_.order() == order, [this, order = order] {
                                   model_.setOrder(order);
                                   order_->refresh();
                               }});
        return choices;
    });
}

void InstallersScreen::searchFor(const QString& query) {
    filter_.setQuery(query);
    refresh();
}

void InstallersScreen::refresh() {
    const auto& rows = model_.rows.rows();
    const auto& result = model_.result.get();
    setUsable(!rows.empty());
    order_->setVisible(!rows.empty());
    showList(filter_.rowCount() > 0);
    if (filter_.rowCount() == 0) showEmpty();
    QStringList reasons;
    for (const auto& file : result.skippedNames)
        reasons << text("cli.skippedName %@", {shown(file.string()).toStdString()});
    showReasons(text("list.incomplete"), reasons, {});
    ByteSum sum;
    for (const auto& row : rows)
        if (row.isSelected) sum.add(row.file.sizeBytes, row.file.isSizePartial);
    const auto chosen = model_.selection.get().size();
    showChosen(chosen, sum.isKnown ? QString::fromStdString(sizeText(sum, texts())) : QString(),
               chosen - std::min(chosen, countTicked()));
    selectMatched_->setEnabled(
        std::ranges::any_of(rows, [](const InstallerRow& row) { return row.file.installedApp.has_value(); }));
}

void InstallersScreen::showEmpty() {
    if (!model_.rows.rows().empty()) return showNoMatch();
    empty().setIcon(QStringLiteral("installers"));
    empty().offer({});
    if (!model_.hasLoaded.get()) {
        empty().say(text("installers.loading"), {});
    } else if (model_.result.get().unreadable) {
        empty().setIcon(QStringLiteral("warning"));
        empty().say(text("installers.unreadable.title"), text("installers.unreadable.message"));
        empty().offer(actions_.remedy, actions_.help);
    } else {
        empty().say(text("installers.empty.title"), text("installers.empty.message"));
        empty().offer(text("leftovers.again"), [this] { model_.load(); });
    }
}

void InstallersScreen::fill(QMenu& menu) {
    const auto* row = list_.row(filter_.mapToSource(view().currentIndex()));
    if (!row) return;
    connect(menu.addAction(text("installers.row.reveal")), &QAction::triggered, this,
            [this, file = row->file.url] { actions_.reveal(file); });
}

} // namespace tidwen
