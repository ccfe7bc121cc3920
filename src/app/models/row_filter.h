#pragma once

#include <QSortFilterProxyModel>
#include <string>

namespace tidwen {

/// The rows of a list in sections that hold what is searched for; a section without any is left out.
class RowFilter final : public QSortFilterProxyModel {
  public:
    explicit RowFilter(QAbstractItemModel& rows);
    void setQuery(const QString& query);

  protected:
    bool filterAcceptsRow(int row, const QModelIndex& above) const override;

  private:
    std::string sought_; ///< in search form
};

} // namespace tidwen
