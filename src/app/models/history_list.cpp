#include "app/models/history_list.h"

#include "app/widgets/words.h"
#include "base/language.h"
#include "base/texts.h"
#include "quarantine/history.h"

#include <QStringList>

#include <string>
#include <vector>

namespace tidwen {

HistoryList::HistoryList(HistoryModel& history, const Texts& texts)
    : history_(history),
      texts_(texts),
      rows_(static_cast<int>(history.entries.get().size())),
      following_(history.entries.observe([this](const auto& entries) {
          beginResetModel();
          rows_ = static_cast<int>(entries.size());
          endResetModel();
      })) {}

int HistoryList::rowCount(const QModelIndex& above) const {
    return above.isValid() ? 0 : rows_;
}

QVariant HistoryList::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto& entry = this->entry(index);
    const auto& apps = entry.manifest.apps;
    switch (role) {
    case Qt::DisplayRole:
        return title(entry);
    case second:
        return secondLine(entry);
    case bundleID:
        return apps.empty() ? QString() : QString::fromStdString(apps.front().bundleID);
    case badge:
        return badgeOf(entry);
    case badgeIsGood:
        return entry.items() == RemovalHistoryEntry::Items::putBack;
    case Qt::AccessibleTextRole: {
        QStringList parts = {title(entry), secondLine(entry), badgeOf(entry)};
        parts.removeAll(QString());
        return parts.join(QStringLiteral(", "));
    }
    default:
        return {};
    }
}

QString HistoryList::title(const RemovalHistoryEntry& entry) const {
    const auto& apps = entry.manifest.apps;
    return apps.empty() ? shown(entry.root.lastComponent()) : listed(apps, &AppRecord::name, texts_);
}

QString HistoryList::secondLine(const RemovalHistoryEntry& entry) const {
    const auto all = std::to_string(entry.totalMoves);
    const bool isPart = entry.pendingMoves > 0 && entry.pendingMoves < entry.totalMoves;
    QStringList parts = {
        QString::fromStdString(formatDate(entry.manifest.createdAt, texts_.language())),
        isPart ? words(texts_, "history.row.itemsLeft %lld %lld", {std::to_string(entry.pendingMoves), all})
               : words(texts_, "history.row.items %lld", {all})};
    // Without items it is that of the record alone.
    if (entry.sizeBytes && entry.pendingMoves > 0) parts << sizeWords(entry.sizeBytes, texts_);
    return parts.join(QStringLiteral(" · "));
}

QString HistoryList::badgeOf(const RemovalHistoryEntry& entry) const {
    using Items = RemovalHistoryEntry::Items;
    if (entry.isPartlyPurged) return words(texts_, "history.row.partlyPurged");
    if (entry.items() == Items::putBack) return words(texts_, "history.row.restored");
    if (entry.items() == Items::missing) return words(texts_, "history.row.missing");
    return entry.manifest.recoveredAt ? words(texts_, "history.row.recovered") : QString();
}

} // namespace tidwen
