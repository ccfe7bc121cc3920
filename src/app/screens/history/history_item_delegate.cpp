#include "app/screens/history/history_item_delegate.h"

#include "app/models/history_items.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/widgets/row_delegate.h"

#include <QPainter>

namespace tidwen {

namespace {

class ItemPainter : public RowPainter {
  public:
    using RowPainter::RowPainter;

    void paint() {
        ground(option_.rect);
        int end = width() - scaled(6);
        if (const auto state = words(HistoryItems::state); !state.isEmpty()) {
            const int wide = QFontMetrics(textFont(Type::second)).horizontalAdvance(state) + 1;
            text(at(end - wide, 0, wide, height()), Type::second, Role::second, state);
            end -= wide + scaled(10);
        }
        twoLines(scaled(6), end, words(Qt::DisplayRole), words(HistoryItems::folder));
    }
};

} // namespace

QSize HistoryItemDelegate::sizeHint(const QStyleOptionViewItem& /*option*/,
                                    const QModelIndex& /*index*/) const {
    return {0, lineHeight(Type::body) + lineHeight(Type::second) + scaled(8)};
}

void HistoryItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
    painter->save();
    ItemPainter(*painter, option, index).paint();
    painter->restore();
}

} // namespace tidwen
