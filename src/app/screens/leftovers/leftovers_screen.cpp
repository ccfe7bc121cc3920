#include "app/screens/leftovers/leftovers_screen.h"

#include "app/widgets/choice_button.h"
#include "app/widgets/details_pane.h"
#include "app/widgets/empty_state.h"
#include "app/widgets/find_delegate.h"
#include "app/widgets/screen_header.h"
#include "app/widgets/words.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "removal/removal_flow_model.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/leftover_filter.h"
#include "sweep/orphan_scanner.h"

#include <QPushButton>
#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

/// Beyond this, asking each row for its height takes longer than a frame has.
constexpr int mostMeasuredRows = 5'000;

} // namespace

LeftoversScreen::LeftoversScreen(RemovalFlowModel& flow, const Texts& texts, const UserEnvironment& user,
                                 Actions actions)
    : ListScreen(texts, {words(texts, "window.leftovers"), "leftovers", "leaf", new FindDelegate(nullptr)},
                 actions.remove),
      flow_(flow),
      actions_(std::move(actions)),
      tree_(flow, texts, user) {
    addMenus();
    selectSafe_ = addButton("leftovers.selectSafe", "select safe",
                            [this] { flow_.setSelected(tree_.idsOf(TraceRisk::safe), true); });
    details_ = new DetailsPane(texts, user,
                               {.reveal = actions_.reveal, .retention = [this] { return flow_.retention(); }},
                               "orphans.risk.");
    addButton(details_->makeButton(DetailsPane::Stands::forFind));
    addBeside(details_);
    setModel(tree_);
    connect(view().selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { details_->show(tree_.trace(current)); });
    connect(&tree_, &QAbstractItemModel::modelReset, details_, [this] { details_->show(nullptr); });
    keep(flow_.sweep().changed.connect([this](SweepChange) { refresh(); }));
    refresh();
}

void LeftoversScreen::addMenus() {
    const auto add = [this](const char* key, std::function<std::vector<ChoiceButton::Choice>()> choices) {
        auto* menu = menus_.emplace_back(new ChoiceButton(text(key), std::move(choices)));
        menu->setObjectName(QString::fromLatin1(key));
        addControl(menu);
    };
    const auto choice = [this](const QString& title, auto LeftoverFilter::*option, auto value) {
        return ChoiceButton::Choice{title, flow_.sweep().filter().*option == value, [this, option, value] {
                                        setFilter([&](LeftoverFilter& filter) { filter.*option = value; });
                                    }};
    };
    add("orphans.filter.kind", [this, choice] {
        using Kind = std::optional<TraceCategory>;
        const auto& snapshot = flow_.sweep().snapshot();
        std::vector choices = {choice(text("orphans.filter.kind.all"), &LeftoverFilter::category, Kind())};
        for (const auto category : allTraceCategories) {
            const auto count = snapshot.categoryCounts[static_cast<std::size_t>(category)];
            if (count == 0 && flow_.sweep().filter().category != category) continue;
            const auto title = texts().text("category." + std::string(name(category)));
            choices.push_back(
                choice(text("orphans.filter.kind.option %@ %lld", {title, std::to_string(count)}),
                       &LeftoverFilter::category, Kind(category)));
        }
        return choices;
    });
    add("orphans.filter.size", [this, choice] {
        std::vector<ChoiceButton::Choice> choices;
        choices.reserve(allSizeFloors.size());
        for (const auto floor : allSizeFloors)
            choices.push_back(choice(floor == LeftoverFilter::SizeFloor::any
                                         ? text("orphans.filter.size.any")
                                         : text("orphans.filter.size.over %@",
                                                {sizeWords(minimumBytes(floor), texts()).toStdString()}),
                                     &LeftoverFilter::floor, floor));
        return choices;
    });
    add("orphans.filter.sort", [this, choice] {
        using Order = LeftoverFilter::Order;
        return std::vector{
            choice(text("orphans.filter.sort.largest"), &LeftoverFilter::order, Order::largest),
            choice(text("orphans.filter.sort.name"), &LeftoverFilter::order, Order::name)};
    });
}

void LeftoversScreen::resizeEvent(QResizeEvent* event) {
    ListScreen::resizeEvent(event);
    details_->fold();
}

void LeftoversScreen::searchFor(const QString& query) {
    setFilter([&](LeftoverFilter& filter) { filter.query = query.toStdString(); });
}

void LeftoversScreen::setFilter(const std::function<void(LeftoverFilter&)>& change) {
    auto filter = flow_.sweep().filter();
    change(filter);
    flow_.sweep().setFilter(std::move(filter));
    for (auto* menu : menus_)
        menu->refresh();
}

const OrphanScanResult* LeftoversScreen::result() const {
    const auto* orphans = std::get_if<stage::Orphans>(&flow_.stage());
    const auto& list = flow_.sweep().snapshot().tree.list;
    const bool isShown = orphans && list && list->traces() == flow_.sweep().traces();
    return isShown ? orphans->result.get() : nullptr;
}

void LeftoversScreen::refresh() {
    const auto* found = result();
    if (std::exchange(shown_, found) != found) {
        showReasons(text("review.incomplete.title"), found ? reasons(*found) : QStringList(),
                    {text("review.incomplete.rescan"), [this] { actions_.sweep(); }});
        for (auto* menu : menus_)
            menu->refresh(); // it tells numbers
        if (found) view().setFocus();
    }
    tree_.refresh();
    showContent();
    showFooter();
}

/// Why something may be missing here.
QStringList LeftoversScreen::reasons(const OrphanScanResult& result) const {
    QStringList all;
    for (const auto& gap : result.gaps)
        all << shown(texts().text(gap.describe()));
    for (const auto& place : result.unreadableLocations)
        all << text("cli.unreadable %@", {shown(place.string()).toStdString()});
    for (const auto& item : result.skippedNames)
        all << text("cli.skippedName %@", {shown(item.string()).toStdString()});
    if (result.leftOut > 0) all << text("cli.leftOut %lld", {std::to_string(result.leftOut)});
    return all;
}

void LeftoversScreen::showContent() {
    const auto summary = summarize(flow_.sweep().snapshot().tree);
    const bool hasFinds = result() && summary.total > 0;
    if (const bool areMany = summary.total > mostMeasuredRows; areMany != view().uniformRowHeights()) {
        view().setUniformRowHeights(areMany);
        view().doItemsLayout();
    }
    header().setLine(
        hasFinds ? text("orphans.filter.showing %lld %lld %@",
                        {std::to_string(summary.shown), std::to_string(summary.total), summary.sizeText})
                 : text("leftovers.line.before"));
    for (QWidget* control : menus_)
        control->setVisible(hasFinds);
    setUsable(hasFinds);
    const bool isShown = hasFinds && summary.shown > 0;
    if (!isShown) showEmpty();
    showList(isShown);
}

void LeftoversScreen::showEmpty() {
    const auto* found = result();
    const bool isFiltered = found && flow_.sweep().filter().isActive();
    if (isFiltered && summarize(flow_.sweep().snapshot().tree).total > 0) {
        return showNoMatch(
            [this] { setFilter([](LeftoverFilter& filter) { filter = {.order = filter.order}; }); });
    }
    const bool isUnsure = found && !found->isComplete();
    empty().setIcon(found && !isUnsure ? QStringLiteral("check") : QStringLiteral("leaf"));
    if (!found)
        empty().say(text("leftovers.before.title"), text("leftovers.before.body"));
    else
        empty().say(text(isUnsure ? "leftovers.undecided.title" : "leftovers.none.title"),
                    text(isUnsure ? "cli.orphans.undecided" : "cli.orphans.none"));
    empty().offer(text(found ? "leftovers.again" : "leftovers.sweep"), [this] { actions_.sweep(); });
}

void LeftoversScreen::showFooter() {
    const auto& summary = flow_.choice().summary();
    const auto count = static_cast<std::size_t>(summary.totalCount);
    showChosen(count, QString::fromStdString(summary.totalSizeText(texts())), tree_.hiddenChosen());
    selectSafe_->setEnabled(!tree_.idsOf(TraceRisk::safe).empty());
}

} // namespace tidwen
