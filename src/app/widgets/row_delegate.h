#pragma once

#include "app/style/metrics.h"
#include "app/style/palette.h"

#include <QStyledItemDelegate>

namespace tidwen {

/// Paints the rows of a `RowView`, and tells where the parts of a row lie that can be clicked.
class RowDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// Empty where there is none.
    struct Places {
        QRect arrow = {};
        QRect box = {};
        QRect control = {};
    };
    virtual Places placesIn(const QRect& row, const QModelIndex& index,
                            Qt::LayoutDirection direction) const = 0;
    /// Rows stand in cards, which begin at the margin; others leave room for what marks them.
    virtual bool hasCards() const { return false; }
    /// Words that have no room side by side go below each other.
    virtual bool growsWhenNarrow() const { return false; }
};

int lineHeight(Type type);

/// One row while it is painted, from its leading edge.
class RowPainter {
  public:
    RowPainter(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        : painter_(painter), option_(option), index_(index) {}

  protected:
    int width() const { return option_.rect.width(); }
    int height() const { return option_.rect.height(); }
    /// A place that counts from the leading edge.
    QRect at(int x, int y, int w, int h) const;
    QRect middle(int x, int size) const { return at(x, (height() - size) / 2, size, size); }
    QString words(int role) const { return index_.data(role).toString(); }

    void text(const QRect& place, Type type, Role color, const QString& words,
              Qt::Alignment side = Qt::AlignLeft);
    /// A title and a line below it, between two edges.
    void twoLines(int x, int end, const QString& title, const QString& second);
    /// Whether it is chosen, under the pointer, or has the focus.
    void ground(const QRectF& place);
    void box(const QRect& place);
    /// A word on a coloured ground that ends at `end`, not wider than `most`; gives where it begins.
    int badge(int end, int most, const QString& words, Role color, Role ground);

    QPainter& painter_;
    const QStyleOptionViewItem& option_;
    const QModelIndex& index_;
};

} // namespace tidwen
