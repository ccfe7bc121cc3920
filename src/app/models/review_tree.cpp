#include "app/models/review_tree.h"

#include "app/models/trace_words.h"
#include "app/widgets/words.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "removal/chosen_items.h"
#include "removal/removal_plan.h"
#include "scan/matching/trace.h"
#include "sweep/leftover_tree.h"

#include <QStringList>
#include <algorithm>
#include <numeric>
#include <string>
#include <variant>

namespace tidwen {

ReviewTree::ReviewTree(RemovalFlowModel& flow, const Texts& texts, UserEnvironment user)
    : FindTree(flow, texts, std::move(user)) {}

void ReviewTree::rebuild() {
    beginResetModel();
    nodes_.clear();
    roots_.clear();
    largest_ = 1;
    const auto& groups = flow_.choice().findings().groups();
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const auto& group = groups[i];
        const auto tree = flow_.reviewTrees().find(group.target.bundleID);
        if (tree == flow_.reviewTrees().end()) continue;
        const int parent =
            groups.size() < 2 ? -1 : add(-1, {.kind = Kind::application, .title = shown(group.target.name)});
        addTree(parent, i, tree->second);
    }
    count();
    endResetModel();
}

void ReviewTree::showOnlyChosen(bool isOn) {
    isOnlyChosen_ = isOn;
    rebuild();
}

int ReviewTree::add(int parent, Node node) {
    auto& siblings = parent < 0 ? roots_ : nodes_[static_cast<std::size_t>(parent)].children;
    const auto number = static_cast<int>(nodes_.size());
    node.parent = parent;
    node.row = static_cast<int>(siblings.size());
    siblings.push_back(number);
    nodes_.push_back(std::move(node));
    return number;
}

/// A reset of permissions that were never given does nothing, and is no row.
void ReviewTree::addTree(int parent, std::size_t number, const LeftoverTree& tree) {
    const auto& choice = flow_.choice();
    const auto isShown = [&](const auto& row) {
        return !choice.findings().resetsNothing(number, *row.trace)
               && (!isOnlyChosen_ || choice.isSelected(row.trace->id));
    };
    const auto hasShown = [&](const auto& group) { return std::ranges::any_of(group.rows, isShown); };
    for (const auto& tier : tree.tiers) {
        if (std::ranges::none_of(tier.groups, hasShown)) continue;
        const int above = add(parent, {.kind = Kind::tier, .title = tierTitle(tier.risk), .risk = tier.risk});
        for (const auto& group : tier.groups) {
            if (!hasShown(group)) continue;
            const int inner = add(
                above,
                {.kind = Kind::group, .title = categoryTitle(group.category), .category = group.category});
            for (const auto& row : group.rows) {
                if (!isShown(row)) continue;
                add(inner, {.trace = row.trace, .risk = tier.risk, .sizeText = std::string(row.sizeText)});
                largest_ = std::max(largest_, row.trace->sizeBytes.value_or(0));
            }
        }
    }
    if (tree.manual.empty() || isOnlyChosen_) return;
    const int above = add(parent, {.kind = Kind::byHand, .title = words(texts_, "review.byHand.title")});
    for (const auto* trace : tree.manual)
        add(above, {.trace = trace, .risk = trace->risk});
}

/// From below: children come after their parents.
void ReviewTree::count() {
    const auto& choice = flow_.choice();
    for (auto& node : nodes_) {
        node.chosen = {};
        node.size = {};
    }
    for (auto node = nodes_.rbegin(); node != nodes_.rend(); ++node) {
        if (node->trace && isEligible(*node->trace, choice.mode())) {
            node->chosen = {choice.isSelected(node->trace->id) ? 1u : 0u, 1};
            node->size.add(node->trace->sizeBytes, node->trace->isSizePartial);
        }
        if (node->parent < 0) continue;
        auto& above = nodes_[static_cast<std::size_t>(node->parent)];
        above.chosen.count += node->chosen.count;
        above.chosen.of += node->chosen.of;
        above.size.add(node->size);
    }
}

void ReviewTree::refresh() {
    count();
    const auto notify = [this](const QModelIndex& above) {
        if (const int rows = rowCount(above); rows > 0)
            Q_EMIT dataChanged(index(0, 0, above), index(rows - 1, 0, above), {Qt::CheckStateRole});
    };
    notify({});
    for (std::size_t i = 0; i < nodes_.size(); ++i)
        if (!nodes_[i].children.empty()) notify(createIndex(nodes_[i].row, 0, static_cast<quintptr>(i)));
}

std::size_t ReviewTree::shownChosen() const {
    return std::accumulate(roots_.begin(), roots_.end(), std::size_t(0), [this](std::size_t sum, int root) {
        return sum + nodes_[static_cast<std::size_t>(root)].chosen.count;
    });
}

const Trace* ReviewTree::trace(const QModelIndex& index) const {
    return index.isValid() ? node(index).trace : nullptr;
}

void ReviewTree::collect(const Node& node, std::vector<Uuid>& ids) const {
    if (node.trace && node.chosen.of > 0) ids.push_back(node.trace->id);
    for (const int child : node.children)
        collect(nodes_[static_cast<std::size_t>(child)], ids);
}

void ReviewTree::toggle(const QModelIndex& index) {
    if (!index.isValid() || node(index).chosen.of == 0) return;
    std::vector<Uuid> ids;
    collect(node(index), ids);
    flow_.setSelected(ids, node(index).chosen.count < node(index).chosen.of);
}

QModelIndex ReviewTree::index(int row, int column, const QModelIndex& above) const {
    const auto& siblings = above.isValid() ? node(above).children : roots_;
    if (row < 0 || column != 0 || row >= static_cast<int>(siblings.size())) return {};
    return createIndex(row, column, static_cast<quintptr>(siblings[static_cast<std::size_t>(row)]));
}

QModelIndex ReviewTree::parent(const QModelIndex& index) const {
    if (!index.isValid() || node(index).parent < 0) return {};
    const auto above = node(index).parent;
    return createIndex(nodes_[static_cast<std::size_t>(above)].row, 0, static_cast<quintptr>(above));
}

int ReviewTree::rowCount(const QModelIndex& above) const {
    return static_cast<int>(above.isValid() ? node(above).children.size() : roots_.size());
}

QVariant ReviewTree::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto& node = this->node(index);
    switch (role) {
    case kind:
        return static_cast<int>(node.kind);
    case Qt::CheckStateRole:
        return checkState(node);
    case risk:
        return static_cast<int>(node.risk);
    case size:
        if (node.kind == Kind::tier && node.size.isKnown)
            return QString::fromStdString(sizeText(node.size, texts_));
        return QString::fromStdString(node.sizeText);
    case Qt::AccessibleTextRole:
        return spoken(index);
    default:
        break;
    }
    if (node.trace) return traceData(node, role);
    if (role == Qt::DisplayRole) return node.title;
    if (role == second && (node.kind == Kind::tier || node.kind == Kind::application))
        return chosenWords(node.chosen);
    return {};
}

QVariant ReviewTree::traceData(const Node& node, int role) const {
    const auto& trace = *node.trace;
    const bool isManual = std::holds_alternative<action::Guidance>(trace.action);
    if (role == second && isManual)
        return shown(texts_.text(std::get<action::Guidance>(trace.action).step.instruction));
    if (role == badge && isManual) return {};
    if (role == badge && staysInMode(trace, flow_.choice().mode()))
        return words(texts_, "review.badge.staysInReset");
    if (role == icon && isManual) return QStringLiteral("hand");
    if (role == second) return placeOrReason(trace);
    return tidwen::traceData(trace, role, largest_, texts_);
}

QVariant ReviewTree::checkState(const Node& node) const {
    if (node.kind == Kind::group || node.chosen.of == 0) return {};
    return node.chosen.box();
}

QString ReviewTree::spoken(const QModelIndex& index) const {
    const auto& node = this->node(index);
    if (node.trace)
        return spokenTrace(*node.trace, {index.data(badge).toString(), node.chosen.count > 0}, texts_);
    QStringList parts = {index.data().toString(), index.data(second).toString()};
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

} // namespace tidwen
