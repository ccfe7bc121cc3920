#include "app/models/find_tree.h"

#include "app/models/trace_words.h"
#include "app/widgets/words.h"

#include <string>
#include <utility>

namespace tidwen {

FindTree::FindTree(RemovalFlowModel& flow, const Texts& texts, UserEnvironment user)
    : flow_(flow), texts_(texts), user_(std::move(user)) {}

bool FindTree::setData(const QModelIndex& index, const QVariant& /*value*/, int role) {
    if (role != Qt::CheckStateRole) return false;
    toggle(index);
    return true;
}

Qt::ItemFlags FindTree::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    if (static_cast<Kind>(index.data(kind).toInt()) == Kind::group) return Qt::ItemIsEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.data(Qt::CheckStateRole).isValid()) flags |= Qt::ItemIsUserCheckable;
    return trace(index) ? flags | Qt::ItemNeverHasChildren : flags;
}

std::size_t FindTree::hiddenChosen() const {
    const auto all = flow_.choice().selectedCount(), shown = shownChosen();
    return all > shown ? all - shown : 0; // a tree that is not refreshed yet may show more
}

Qt::CheckState FindTree::Chosen::box() const {
    if (count == 0) return Qt::Unchecked;
    return count == of ? Qt::Checked : Qt::PartiallyChecked;
}

QString FindTree::tierTitle(TraceRisk tier) const {
    return words(texts_, "risk." + std::string(name(tier)) + ".title");
}

QString FindTree::categoryTitle(TraceCategory category) const {
    return words(texts_, "category." + std::string(name(category)));
}

QString FindTree::chosenWords(const Chosen& chosen) const {
    return words(texts_, "review.tier.count %lld %lld",
                 {std::to_string(chosen.count), std::to_string(chosen.of)});
}

QString FindTree::placeOrReason(const Trace& trace) const {
    const auto place = tracePlace(trace, user_);
    return place.isEmpty() ? traceReason(trace, texts_) : place;
}

} // namespace tidwen
