#pragma once

#include <QList>
#include <QPair>
#include <QString>

class QAbstractItemView;
class QModelIndex;
class QWidget;

namespace tidwen {

/// What the person at the window has done in its fields and lists and no model knows: what is typed, chosen,
/// folded and scrolled to. Kept while the widgets are made anew, and given back to the new ones, which are
/// the same in number and order.
class KeptViews {
  public:
    static KeptViews of(const QWidget& root);
    void giveTo(QWidget& root) const;

  private:
    /// A row by its number and words from the top down.
    using Row = QList<QPair<int, QString>>;
    struct List {
        Row current;
        QList<Row> chosen;
        QList<Row> folded;
        Row top; ///< the first that shows
        bool hasFocus = false;
    };

    static Row rowOf(const QModelIndex& index);
    static QModelIndex find(const QAbstractItemView& view, const Row& row);
    static List listOf(const QAbstractItemView& view);
    static void give(const List& kept, QAbstractItemView& view);

    QList<QString> fields_;
    QList<List> lists_;
};

} // namespace tidwen
