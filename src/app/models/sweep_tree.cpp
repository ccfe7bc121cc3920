#include "app/models/sweep_tree.h"

#include "app/models/trace_words.h"
#include "app/widgets/words.h"
#include "base/byte_sum.h"
#include "base/list_change.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "removal/findings.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <numeric>
#include <string>

namespace tidwen {

namespace {

// Identifiers of indices: what a row lies in.
constexpr quintptr inNothing = 0;
constexpr quintptr inTiers = 1;
constexpr quintptr inGroups = 100;

quintptr inTier(TraceRisk risk) {
    return inTiers + static_cast<quintptr>(risk);
}

quintptr inGroup(TraceRisk risk, TraceCategory category) {
    return inGroups * (1 + static_cast<quintptr>(risk)) + static_cast<quintptr>(category);
}

template<class T>
auto at(std::vector<T>& list, std::size_t index) {
    return list.begin() + static_cast<std::ptrdiff_t>(index);
}

int number(std::size_t index) {
    return static_cast<int>(index);
}

} // namespace

SweepTree::SweepTree(RemovalFlowModel& flow, const Texts& texts, UserEnvironment user)
    : FindTree(flow, texts, std::move(user)),
      willChange_(
          flow.sweep().rows.willChange.connect([this](const RowChange& change) { willChange(change); })),
      changed_(flow.sweep().rows.changed.connect([this](const RowChange& change) { changed(change); })) {
    rebuild();
}

SweepTree::Place SweepTree::place(const QModelIndex& index) const {
    const auto id = index.internalId();
    const auto row = static_cast<std::size_t>(index.row());
    if (id == inNothing) return {Kind::tier, row};
    if (id < inGroups) return {Kind::group, tierOf(static_cast<TraceRisk>(id - inTiers)), row};
    const auto tier = tierOf(static_cast<TraceRisk>(id / inGroups - 1));
    return {Kind::item, tier, groupOf(tier, static_cast<TraceCategory>(id % inGroups)), row};
}

QModelIndex SweepTree::tierIndex(std::size_t tier) const {
    return createIndex(number(tier), 0, inNothing);
}

QModelIndex SweepTree::groupIndex(std::size_t tier, std::size_t group) const {
    return createIndex(number(group), 0, inTier(tiers_[tier].heading.risk));
}

std::size_t SweepTree::tierOf(TraceRisk sought) const {
    const auto found =
        std::ranges::find_if(tiers_, [&](const Tier& tier) { return tier.heading.risk >= sought; });
    return static_cast<std::size_t>(found - tiers_.begin());
}

std::size_t SweepTree::groupOf(std::size_t tier, TraceCategory category) const {
    const auto& groups = tiers_[tier].groups;
    const auto found =
        std::ranges::find_if(groups, [&](const Group& group) { return group.category >= category; });
    return static_cast<std::size_t>(found - groups.begin());
}

std::size_t SweepTree::firstRow(std::size_t tier, std::size_t group) const {
    std::size_t row = 0;
    for (std::size_t t = 0; t <= tier; ++t) {
        ++row; // its heading
        const auto end = t == tier ? group : tiers_[t].groups.size();
        for (std::size_t g = 0; g < end; ++g)
            row += 1 + tiers_[t].groups[g].items.size();
    }
    return row + 1;
}

std::size_t SweepTree::runEnd(std::size_t first, std::size_t end) const {
    const auto& all = rows();
    auto last = first;
    while (last < end && all[last].trace && all[last].risk == all[first].risk
           && all[last].category == all[first].category)
        ++last;
    return last;
}

void SweepTree::willChange(const RowChange& change) {
    if (change.kind == RowChange::Kind::reset) beginResetModel();
    if (change.kind == RowChange::Kind::removed) removeFinds(change.first, change.first + change.count);
}

void SweepTree::changed(const RowChange& change) {
    areRowsNew_ = true;
    const auto end = change.first + change.count;
    switch (change.kind) {
    case RowChange::Kind::reset:
        rebuild();
        return endResetModel();
    case RowChange::Kind::inserted:
        return insertFinds(change.first, end);
    case RowChange::Kind::changed:
        return replaceRows(change.first, end);
    case RowChange::Kind::removed:
        break;
    }
}

void SweepTree::rebuild() {
    tiers_.clear();
    for (const auto& row : rows())
        if (!row.category)
            tiers_.push_back({.heading = row});
        else if (!row.trace)
            tiers_.back().groups.push_back({.category = *row.category});
        else
            tiers_.back().groups.back().items.push_back(row.trace);
}

/// From the end, so that everything above a heading is gone before the heading.
void SweepTree::removeFinds(std::size_t first, std::size_t end) {
    const auto& all = rows();
    while (end > first) {
        const auto& last = all[end - 1];
        const auto tier = tierOf(last.risk);
        if (!last.category) {
            beginRemoveRows({}, number(tier), number(tier));
            tiers_.erase(at(tiers_, tier));
            endRemoveRows();
            --end;
            continue;
        }
        auto& groups = tiers_[tier].groups;
        const auto group = groupOf(tier, *last.category);
        if (!last.trace) {
            beginRemoveRows(tierIndex(tier), number(group), number(group));
            groups.erase(at(groups, group));
            endRemoveRows();
            --end;
            continue;
        }
        const auto start = firstRow(tier, group);
        const auto begin = std::max(first, start);
        auto& items = groups[group].items;
        beginRemoveRows(groupIndex(tier, group), number(begin - start), number(end - 1 - start));
        items.erase(at(items, begin - start), at(items, end - start));
        endRemoveRows();
        end = begin;
    }
}

void SweepTree::insertFinds(std::size_t first, std::size_t end) {
    const auto& all = rows();
    while (first < end) {
        const auto& row = all[first];
        const auto tier = tierOf(row.risk);
        if (!row.category) {
            beginInsertRows({}, number(tier), number(tier));
            tiers_.insert(at(tiers_, tier), Tier{.heading = row});
            endInsertRows();
            ++first;
            continue;
        }
        auto& groups = tiers_[tier].groups;
        const auto group = groupOf(tier, *row.category);
        if (!row.trace) {
            beginInsertRows(tierIndex(tier), number(group), number(group));
            groups.insert(at(groups, group), Group{.category = *row.category});
            endInsertRows();
            ++first;
            continue;
        }
        const auto start = firstRow(tier, group);
        const auto last = runEnd(first, end);
        std::vector<const Trace*> added;
        added.reserve(last - first);
        for (auto i = first; i < last; ++i)
            added.push_back(all[i].trace);
        auto& items = groups[group].items;
        beginInsertRows(groupIndex(tier, group), number(first - start), number(last - 1 - start));
        items.insert(at(items, first - start), added.begin(), added.end());
        endInsertRows();
        first = last;
    }
}

void SweepTree::replaceRows(std::size_t first, std::size_t end) {
    const auto& all = rows();
    while (first < end) {
        const auto& row = all[first];
        const auto tier = tierOf(row.risk);
        if (!row.trace) {
            if (!row.category) tiers_[tier].heading = row;
            const auto changed =
                row.category ? groupIndex(tier, groupOf(tier, *row.category)) : tierIndex(tier);
            Q_EMIT dataChanged(changed, changed, {second, size});
            ++first;
            continue;
        }
        const auto group = groupOf(tier, *row.category);
        const auto start = firstRow(tier, group);
        const auto last = runEnd(first, end);
        auto& items = tiers_[tier].groups[group].items;
        for (auto i = first; i < last; ++i)
            items[i - start] = all[i].trace;
        const auto above = groupIndex(tier, group);
        Q_EMIT dataChanged(index(number(first - start), 0, above), index(number(last - 1 - start), 0, above),
                           {Qt::DisplayRole, size});
        first = last;
    }
}

void SweepTree::refresh() {
    const auto& choice = flow_.choice();
    const bool areOthers =
        known_.lock() != choice.shareFindings() || knownList_.lock() != flow_.sweep().snapshot().tree.list;
    if (areOthers) learnFinds();
    if (areOthers || areRowsNew_) numberFinds();
    for (auto& tier : tiers_)
        tier.selected = static_cast<std::size_t>(std::ranges::count_if(
            tier.numbers, [&](std::size_t number) { return choice.isSelected(number); }));
    if (!tiers_.empty())
        Q_EMIT dataChanged(tierIndex(0), tierIndex(tiers_.size() - 1), {Qt::CheckStateRole, second});
}

/// Once for all filters: identifiers are looked up and traces read all over the memory.
void SweepTree::learnFinds() {
    const auto& list = flow_.sweep().snapshot().tree.list;
    known_ = flow_.choice().shareFindings();
    knownList_ = list;
    findOwners();
    numbers_.clear();
    largest_ = 1;
    if (!list) return;
    numbers_.reserve(list->traces().size());
    for (const auto* trace : list->traces()) {
        numbers_.push_back(flow_.choice().findings().number(trace->id));
        largest_ = std::max(largest_, trace->sizeBytes.value_or(0));
    }
}

/// The tiers hold the rows of the sweep in their order.
void SweepTree::numberFinds() {
    areRowsNew_ = false;
    std::size_t row = 0;
    for (auto& tier : tiers_) {
        ++row; // its heading
        tier.numbers.clear();
        for (const auto& group : tier.groups) {
            ++row;
            for (const auto end = row + group.items.size(); row < end; ++row)
                if (const auto& number = numbers_[flow_.sweep().findNumber(row)])
                    tier.numbers.push_back(*number);
        }
    }
}

void SweepTree::findOwners() {
    owners_.clear();
    for (const auto& group : flow_.choice().findings().groups())
        if (!group.traces.empty()) owners_.emplace_back(group.traces.data(), &group);
    std::ranges::sort(owners_, std::less{}, [](const auto& owner) { return owner.first; });
}

const FoundGroup* SweepTree::owner(const Trace& trace) const {
    const auto next =
        std::ranges::upper_bound(owners_, &trace, std::less{}, [](const auto& owner) { return owner.first; });
    if (next == owners_.begin()) return nullptr;
    const auto* group = std::prev(next)->second;
    return std::less{}(&trace, group->traces.data() + group->traces.size()) ? group : nullptr;
}

/// Where it lies, and the application it came from unless its own name says that.
QString SweepTree::secondLine(const Trace& trace) const {
    auto line = placeOrReason(trace);
    const auto* group = owner(trace);
    if (!group) return line;
    const auto title = traceTitle(trace, texts_);
    for (const auto* name : {&group->target.name, &group->target.bundleID})
        if (!name->empty() && !title.startsWith(shown(*name), Qt::CaseInsensitive))
            return line + QStringLiteral(" · ") + shown(*name);
    return line;
}

std::size_t SweepTree::shownChosen() const {
    return std::accumulate(tiers_.begin(), tiers_.end(), std::size_t(0),
                           [](std::size_t sum, const Tier& tier) { return sum + tier.selected; });
}

const Trace* SweepTree::trace(const QModelIndex& index) const {
    if (!index.isValid()) return nullptr;
    const auto found = place(index);
    return found.kind == Kind::item ? tiers_[found.tier].groups[found.group].items[found.item] : nullptr;
}

std::vector<Uuid> SweepTree::idsOf(TraceRisk wanted) const {
    std::vector<Uuid> ids;
    for (const auto& tier : tiers_) {
        if (tier.heading.risk != wanted) continue;
        ids.reserve(tier.heading.count);
        for (const auto& group : tier.groups)
            for (const auto* item : group.items)
                ids.push_back(item->id);
    }
    return ids;
}

void SweepTree::toggle(const QModelIndex& index) {
    if (!index.isValid()) return;
    if (const auto* chosen = trace(index)) {
        flow_.setSelected({chosen->id}, !flow_.choice().isSelected(chosen->id));
        return;
    }
    const auto& tier = tiers_[place(index).tier];
    flow_.setSelected(idsOf(tier.heading.risk), tier.selected < tier.heading.count);
}

QModelIndex SweepTree::index(int row, int column, const QModelIndex& above) const {
    if (row < 0 || column != 0 || row >= rowCount(above)) return {};
    if (!above.isValid()) return tierIndex(static_cast<std::size_t>(row));
    const auto over = place(above);
    const auto& tier = tiers_[over.tier];
    if (over.kind == Kind::tier) return groupIndex(over.tier, static_cast<std::size_t>(row));
    return createIndex(row, 0, inGroup(tier.heading.risk, tier.groups[over.group].category));
}

QModelIndex SweepTree::parent(const QModelIndex& index) const {
    if (!index.isValid() || index.internalId() == inNothing) return {};
    const auto found = place(index);
    return found.kind == Kind::group ? tierIndex(found.tier) : groupIndex(found.tier, found.group);
}

int SweepTree::rowCount(const QModelIndex& above) const {
    if (!above.isValid()) return number(tiers_.size());
    const auto over = place(above);
    if (over.kind == Kind::tier) return number(tiers_[over.tier].groups.size());
    return over.kind == Kind::group ? number(tiers_[over.tier].groups[over.group].items.size()) : 0;
}

/// A view asks for those of every row before it shows one, so what is chosen is not looked up: all can be.
Qt::ItemFlags SweepTree::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    const auto id = index.internalId();
    if (id != inNothing && id < inGroups) return Qt::ItemIsEnabled; // the heading of a group
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable;
    return id == inNothing ? flags : flags | Qt::ItemNeverHasChildren;
}

QVariant SweepTree::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto found = place(index);
    const auto& tier = tiers_[found.tier];
    if (role == kind) return static_cast<int>(found.kind);
    if (role == risk) return static_cast<int>(tier.heading.risk);
    if (found.kind == Kind::tier) return tierData(tier, role);
    const auto& group = tier.groups[found.group];
    if (found.kind == Kind::group)
        return role == Qt::DisplayRole || role == Qt::AccessibleTextRole ? categoryTitle(group.category)
                                                                         : QVariant();
    const auto& item = *group.items[found.item];
    const bool isSelected = flow_.choice().isSelected(item.id);
    if (role == second) return secondLine(item);
    if (role == Qt::CheckStateRole) return isSelected ? Qt::Checked : Qt::Unchecked;
    if (role == Qt::AccessibleTextRole)
        return spokenTrace(item, {traceBadge(item, texts_), isSelected}, texts_);
    return traceData(item, role, largest_, texts_);
}

QVariant SweepTree::tierData(const Tier& tier, int role) const {
    const Chosen chosen{tier.selected, tier.heading.count};
    switch (role) {
    case Qt::DisplayRole:
        return tierTitle(tier.heading.risk);
    case second:
        return chosenWords(chosen);
    case size:
        return tier.heading.size.isKnown ? QString::fromStdString(sizeText(tier.heading.size, texts_))
                                         : QString();
    case Qt::CheckStateRole:
        return chosen.box();
    case Qt::ToolTipRole:
        return words(texts_, "orphans.risk." + std::string(name(tier.heading.risk)) + ".note");
    case Qt::AccessibleTextRole:
        return tierTitle(tier.heading.risk) + QStringLiteral(", ") + chosenWords(chosen);
    default:
        return {};
    }
}

} // namespace tidwen
