#include "app/models/history_items.h"

#include "app/models/trace_words.h"
#include "app/widgets/words.h"
#include "base/path.h"
#include "quarantine/manifest.h"

#include <cstddef>
#include <utility>

namespace tidwen {

HistoryItems::HistoryItems(const Texts& texts, UserEnvironment user)
    : texts_(texts), user_(std::move(user)) {}

void HistoryItems::show(const RemovalHistoryEntry* entry) {
    std::vector<Item> items;
    if (entry)
        for (const auto& step : entry->manifest.entries)
            if (step.kind == ManifestEntryKind::move)
                items.push_back({step.source, entry->pendingItems.contains(step.source)});
    if (items == items_) return;
    beginResetModel();
    items_ = std::move(items);
    endResetModel();
}

ItemChoice HistoryItems::choice(const QModelIndexList& rows) const {
    ItemChoice chosen;
    for (const auto& index : rows)
        chosen.insert(items_[static_cast<std::size_t>(index.row())].source);
    return chosen;
}

int HistoryItems::rowCount(const QModelIndex& above) const {
    return above.isValid() ? 0 : static_cast<int>(items_.size());
}

QVariant HistoryItems::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto& item = items_[static_cast<std::size_t>(index.row())];
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
    auto words = shortPath(Path(item.source), user_);
    if (!item.isPending) words += QStringLiteral(" · ") + tidwen::words(texts_, "history.item.away");
    return role == Qt::ToolTipRole ? words.toHtmlEscaped() : words;
}

Qt::ItemFlags HistoryItems::flags(const QModelIndex& index) const {
    if (!index.isValid() || !items_[static_cast<std::size_t>(index.row())].isPending) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

} // namespace tidwen
