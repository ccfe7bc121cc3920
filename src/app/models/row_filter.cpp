#include "app/models/row_filter.h"

#include "app/models/card_row.h"
#include "base/text.h"

namespace tidwen {

RowFilter::RowFilter(QAbstractItemModel& rows) {
    setRecursiveFilteringEnabled(true);
    setSourceModel(&rows);
}

void RowFilter::setQuery(const QString& query) {
    sought_ = folded(trimmed(query.toStdString()));
    invalidateFilter();
}

bool RowFilter::filterAcceptsRow(int row, const QModelIndex& above) const {
    if (!above.isValid()) return false; // comes with what is below it
    if (sought_.empty()) return true;
    const auto index = sourceModel()->index(row, 0, above);
    for (const int role : {static_cast<int>(Qt::DisplayRole), static_cast<int>(CardRow::second)})
        if (folded(index.data(role).toString().toStdString()).find(sought_) != std::string::npos) return true;
    return false;
}

} // namespace tidwen
