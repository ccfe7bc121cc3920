#include "app/models/home_list.h"

#include "app/widgets/words.h"
#include "base/language.h"
#include "base/list_change.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "inventory/home_grid.h"
#include "inventory/last_use_text.h"

#include <QStringList>

#include <cstdint>

namespace tidwen {

HomeList::HomeList(HomeGridModel& grid, const Texts& texts, const Clock& clock)
    : grid_(grid),
      texts_(texts),
      clock_(clock),
      willChange_(grid.rows.willChange.connect([this](const RowChange& change) { begin(change); })),
      changed_(grid.rows.changed.connect([this](const RowChange& change) { end(change); })) {}

int HomeList::rowCount(const QModelIndex& above) const {
    return above.isValid() ? 0 : static_cast<int>(grid_.rows.rows().size());
}

QVariant HomeList::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto& row = this->row(index);
    switch (role) {
    case Qt::DisplayRole:
        return row.app
                   ? shown(row.app->name)
                   : QString::fromStdString(homeGroupTitle(grid_.options().grouping, row.groupID, texts_));
    case second:
        return secondLine(row);
    case isHeading:
        return !row.app;
    case bundleID:
        return row.app ? QString::fromStdString(row.app->bundleID) : QString();
    case bundle:
        return row.app ? QByteArray::fromStdString(row.app->url.string()) : QByteArray();
    case isProtected:
        return row.isProtected;
    case tags: {
        QStringList names;
        for (const auto& tag : row.tags)
            names << shown(tag);
        return names;
    }
    case Qt::AccessibleTextRole:
        return spoken(row);
    default:
        return {};
    }
}

Qt::ItemFlags HomeList::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    const Qt::ItemFlags card = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    return row(index).app ? card : Qt::ItemFlags(Qt::ItemNeverHasChildren);
}

QString HomeList::secondLine(const HomeRow& row) const {
    QStringList parts;
    if (!row.app) {
        parts << QString::fromStdString(
            formatNumber(static_cast<std::int64_t>(row.count), texts_.language()));
        if (row.size.isKnown) parts << sizeWords(row.size.bytes, texts_);
    } else {
        if (row.app->sizeBytes) parts << sizeWords(row.app->sizeBytes, texts_);
        if (const auto used = describeLastUse(*row.app, clock_.now()))
            parts << QString::fromStdString(texts_.text(*used));
    }
    return parts.join(QStringLiteral(" · "));
}

QString HomeList::spoken(const HomeRow& row) const {
    if (!row.app)
        return QString::fromStdString(homeGroupTitle(grid_.options().grouping, row.groupID, texts_));
    QStringList parts = {shown(row.app->name), secondLine(row)};
    if (row.isProtected) parts << words(texts_, "cli.apps.protected");
    for (const auto& tag : row.tags)
        parts << shown(tag);
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

void HomeList::begin(const RowChange& change) {
    const auto first = static_cast<int>(change.first);
    const auto last = static_cast<int>(change.first + change.count) - 1;
    if (change.kind == RowChange::Kind::reset) beginResetModel();
    if (change.kind == RowChange::Kind::inserted) beginInsertRows({}, first, last);
    if (change.kind == RowChange::Kind::removed) beginRemoveRows({}, first, last);
}

void HomeList::end(const RowChange& change) {
    switch (change.kind) {
    case RowChange::Kind::reset:
        return endResetModel();
    case RowChange::Kind::inserted:
        return endInsertRows();
    case RowChange::Kind::removed:
        return endRemoveRows();
    case RowChange::Kind::changed:
        Q_EMIT dataChanged(index(static_cast<int>(change.first)),
                           index(static_cast<int>(change.first + change.count) - 1));
    }
}

} // namespace tidwen
