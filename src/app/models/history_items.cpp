#include "app/models/history_items.h"

#include "app/models/trace_words.h"
#include "app/widgets/words.h"
#include "base/path.h"
#include "quarantine/manifest.h"

#include <QStringList>
#include <cstddef>
#include <utility>

namespace tidwen {

namespace {

ItemPlace placeIn(const RemovalHistoryEntry& run, const std::string& source) {
    if (run.pendingItems.contains(source)) return ItemPlace::inQuarantine;
    return run.missingItems.contains(source) ? ItemPlace::missing : ItemPlace::putBack;
}

} // namespace

HistoryItems::HistoryItems(const Texts& texts, UserEnvironment user)
    : texts_(texts), user_(std::move(user)) {}

void HistoryItems::show(const RemovalHistoryEntry* entry) {
    std::vector<Item> items;
    if (entry)
        for (const auto& step : entry->manifest.entries)
            if (step.kind == ManifestEntryKind::move)
                items.push_back({step.source, placeIn(*entry, step.source)});
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
    const Path source(item.source);
    switch (role) {
    case Qt::DisplayRole:
        return shown(source.lastComponent());
    case folder:
        return shortPath(source.parent(), user_);
    case Qt::ToolTipRole:
        return shortPath(source, user_).toHtmlEscaped();
    case Qt::AccessibleTextRole:
        return QStringList{shortPath(source, user_), stateWords(item)}.join(QStringLiteral(", "));
    case state:
        return stateWords(item);
    default:
        return {};
    }
}

QString HistoryItems::stateWords(const Item& item) const {
    if (item.place == ItemPlace::inQuarantine) return {};
    return words(texts_, item.place == ItemPlace::missing ? "cli.item.missing" : "cli.item.putBack");
}

Qt::ItemFlags HistoryItems::flags(const QModelIndex& index) const {
    if (!index.isValid() || items_[static_cast<std::size_t>(index.row())].place != ItemPlace::inQuarantine)
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

} // namespace tidwen
