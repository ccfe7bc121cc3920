#include "app/screens/review/review_filter.h"

#include "app/widgets/parts.h"
#include "app/widgets/words.h"
#include "base/texts.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/leftover_filter.h"

#include <QMenu>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace tidwen {

namespace {

class FilterMenu final : public QMenu {
  public:
    FilterMenu(QWidget* parent, RemovalFlowModel& flow, const Texts& texts, OnlyChosen onlyChosen)
        : QMenu(parent), flow_(flow), texts_(texts), onlyChosen_(std::move(onlyChosen)) {
        connect(this, &QMenu::aboutToShow, this, [this] { fill(); });
    }

  private:
    void fill() {
        clear();
        const auto& filter = flow_.reviewFilter();
        for (const auto risk : {TraceRisk::safe, TraceRisk::review, TraceRisk::sensitive})
            add(words(texts_, "risk." + std::string(name(risk)) + ".title"), filter.risks.contains(risk),
                [risk](LeftoverFilter& changed) {
                    if (changed.risks.erase(risk) == 0) changed.risks.insert(risk);
                });
        auto* chosen = addAction(words(texts_, "review.filter.chosen"));
        chosen->setObjectName(QStringLiteral("only chosen"));
        chosen->setCheckable(true);
        chosen->setChecked(onlyChosen_.isOn());
        connect(chosen, &QAction::triggered, this, [this](bool isOn) { onlyChosen_.set(isOn); });
        addSection(words(texts_, "orphans.filter.kind"));
        for (const auto& [category, count] : categories())
            add(words(texts_, "orphans.filter.kind.option %@ %lld",
                      {texts_.text("category." + std::string(name(category))), std::to_string(count)}),
                filter.category == category, [category = category](LeftoverFilter& changed) {
                    const bool isOnly = changed.category == category;
                    changed.category = isOnly ? std::nullopt : std::optional(category);
                });
        addSection(words(texts_, "orphans.filter.sort"));
        for (const auto order : {LeftoverFilter::Order::largest, LeftoverFilter::Order::name})
            add(words(texts_, "orphans.filter.sort." + std::string(name(order))), filter.order == order,
                [order](LeftoverFilter& changed) { changed.order = order; });
        addSeparator();
        auto* all = addAction(words(texts_, "orphans.filter.clear"));
        all->setEnabled(filter.isActive() || onlyChosen_.isOn());
        connect(all, &QAction::triggered, this, [this] {
            onlyChosen_.set(false);
            flow_.setReviewFilter({});
        });
    }

    void add(const QString& title, bool isOn, std::function<void(LeftoverFilter&)> change) {
        auto* action = addAction(title);
        action->setCheckable(true);
        action->setChecked(isOn);
        connect(action, &QAction::triggered, this, [this, change = std::move(change)] {
            auto filter = flow_.reviewFilter();
            change(filter);
            flow_.setReviewFilter(std::move(filter));
        });
    }

    std::map<TraceCategory, int> categories() const {
        std::map<TraceCategory, int> counts;
        for (const auto& group : flow_.choice().findings().groups())
            for (const auto& trace : group.traces)
                ++counts[trace.category];
        return counts;
    }

    RemovalFlowModel& flow_;
    const Texts& texts_;
    OnlyChosen onlyChosen_;
};

} // namespace

QMenu* reviewFilterMenu(QWidget* parent, RemovalFlowModel& flow, const Texts& texts, OnlyChosen onlyChosen) {
    return new FilterMenu(parent, flow, texts, std::move(onlyChosen));
}

void toggleCategory(RemovalFlowModel& flow, TraceCategory category) {
    auto filter = flow.reviewFilter();
    const bool isOnly = filter.category == category;
    filter.category = isOnly ? std::nullopt : std::optional(category);
    flow.setReviewFilter(std::move(filter));
}

} // namespace tidwen
