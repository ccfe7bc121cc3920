#include "app/models/history_list.h"

#include "app/widgets/words.h"
#include "base/byte_sum.h"
#include "base/language.h"
#include "base/text.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "quarantine/history.h"
#include "quarantine/history_grouping.h"
#include "quarantine/manifest_subject.h"

#include <QStringList>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace tidwen {

namespace {

/// Where the bundle of the first application is now; empty when the run moved none.
std::string bundleOf(const RemovalHistoryEntry& entry) {
    if (entry.manifest.apps.empty()) return {};
    const auto& moves = entry.manifest.entries;
    const auto found = std::ranges::find_if(moves, [&](const ManifestEntry& move) {
        return move.destination && move.bundleID == entry.manifest.apps.front().bundleID
               && move.source.ends_with(".app");
    });
    if (found == moves.end()) return {};
    const bool isHeld = entry.pendingItems.contains(found->source);
    return isHeld ? *found->destination : found->source;
}

} // namespace

HistoryList::HistoryList(HistoryModel& history, const Texts& texts)
    : history_(history), texts_(texts), following_(history.entries.observe([this](const auto&) {
          searchTexts_.clear();
          rebuild();
      })) {
    rebuild();
}

void HistoryList::setQuery(const QString& query) {
    sought_ = folded(trimmed(query.toStdString()));
    rebuild();
}

void HistoryList::rebuild() {
    const auto& entries = history_.entries.get();
    const auto now = SystemClock().now();
    beginResetModel();
    rows_.clear();
    QString last;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (!isSought(i)) continue;
        const auto words = heading(entries[i], now);
        if (words != last) rows_.push_back({words, {}});
        last = words;
        rows_.push_back({{}, i});
    }
    endResetModel();
}

/// What a run can be found by is put together once, not for each key.
bool HistoryList::isSought(std::size_t entry) {
    if (sought_.empty()) return true;
    const auto& entries = history_.entries.get();
    if (searchTexts_.size() != entries.size()) {
        searchTexts_.clear();
        std::ranges::transform(entries, std::back_inserter(searchTexts_), searchText);
    }
    return searchTexts_[entry].find(sought_) != std::string::npos;
}

const HistoryList::Row* HistoryList::row(const QModelIndex& index) const {
    const auto number = static_cast<std::size_t>(index.row());
    return index.isValid() && number < rows_.size() ? &rows_[number] : nullptr;
}

const RemovalHistoryEntry* HistoryList::entry(const QModelIndex& index) const {
    const auto* found = row(index);
    const auto& entries = history_.entries.get();
    return found && found->entry && *found->entry < entries.size() ? &entries[*found->entry] : nullptr;
}

QModelIndex HistoryList::indexOf(const Path& root) const {
    const auto& entries = history_.entries.get();
    const auto found = std::ranges::find_if(
        rows_, [&](const Row& row) { return row.entry && entries[*row.entry].root == root; });
    if (found != rows_.end()) return index(static_cast<int>(found - rows_.begin()));
    return rows_.empty() ? QModelIndex() : index(1); // below its heading
}

int HistoryList::rowCount(const QModelIndex& above) const {
    return above.isValid() ? 0 : static_cast<int>(rows_.size());
}

Qt::ItemFlags HistoryList::flags(const QModelIndex& index) const {
    return entry(index) ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren
                        : Qt::ItemFlags(Qt::NoItemFlags);
}

QVariant HistoryList::data(const QModelIndex& index, int role) const {
    const auto* shown = row(index);
    if (role == isHeading) return shown && !shown->entry;
    if (shown && !shown->entry)
        return role == Qt::DisplayRole || role == Qt::AccessibleTextRole ? shown->heading : QVariant();
    const auto* found = this->entry(index);
    if (!found) return {};
    const auto& entry = *found;
    const auto& apps = entry.manifest.apps;
    switch (role) {
    case Qt::DisplayRole:
        return title(entry.root, entry.manifest);
    case second:
        return secondLine(entry);
    case bundleID:
        return apps.empty() ? QString() : QString::fromStdString(apps.front().bundleID);
    case bundle:
        return QByteArray::fromStdString(bundleOf(entry));
    case badge:
        return badgeOf(entry);
    case badgeIsGood:
        return entry.items() == RemovalHistoryEntry::Items::putBack;
    case Qt::AccessibleTextRole: {
        QStringList parts = {title(entry.root, entry.manifest), secondLine(entry), badgeOf(entry)};
        parts.removeAll(QString());
        return parts.join(QStringLiteral(", "));
    }
    default:
        return {};
    }
}

QString HistoryList::heading(const RemovalHistoryEntry& entry, Timestamp now) const {
    switch (groupOf(entry, now)) {
    case HistoryGroup::today:
        return words(texts_, "history.today");
    case HistoryGroup::yesterday:
        return words(texts_, "history.yesterday");
    case HistoryGroup::month:
        break;
    }
    return QString::fromStdString(formatMonth(entry.manifest.createdAt, texts_.language()));
}

QString HistoryList::title(const Path& root, const Manifest& manifest) const {
    return shown(manifest.apps.empty() ? root.lastComponent() : subjectText(manifest, texts_));
}

QString HistoryList::interruptedTitle(const UnfinishedRun& run) const {
    const bool isDamaged = run.problem == UnfinishedRun::Problem::unreadableManifest;
    if (!run.known || run.recordOf || isDamaged) return shown(run.root.lastComponent());
    return words(texts_, "home.recovery.title %@", {title(run.root, *run.known).toStdString()});
}

QString HistoryList::help(const RemovalHistoryEntry& entry) const {
    using Items = RemovalHistoryEntry::Items;
    if (entry.isPartlyPurged) return words(texts_, "history.help.partlyPurged");
    if (entry.missingMoves > 0)
        return words(texts_,
                     entry.pendingMoves > 0 ? "history.help.missing %lld %lld"
                                            : "history.help.noneLeft %lld %lld",
                     {std::to_string(entry.missingMoves), std::to_string(entry.totalMoves)});
    const bool isInterrupted = entry.manifest.recoveredAt && entry.items() == Items::inQuarantine;
    return isInterrupted ? words(texts_, "history.help.recovered") : QString();
}

QString HistoryList::secondLine(const RemovalHistoryEntry& entry) const {
    const auto all = std::to_string(entry.totalMoves);
    const bool isPart = entry.pendingMoves > 0 && entry.pendingMoves < entry.totalMoves;
    const bool isDaySaid = groupOf(entry, SystemClock().now()) != HistoryGroup::month; // by its heading
    const auto& date = entry.manifest.createdAt;
    QStringList parts = {
        QString::fromStdString((isDaySaid ? formatTime : formatDate)(date, texts_.language())),
        isPart ? words(texts_, "history.row.itemsLeft %lld %lld", {std::to_string(entry.pendingMoves), all})
               : words(texts_, "history.row.items %lld", {all})};
    // Without items it is that of the record alone.
    if (entry.sizeBytes && entry.pendingMoves > 0)
        parts << QString::fromStdString(sizeText(*entry.sizeBytes, entry.isSizePartial, texts_));
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
