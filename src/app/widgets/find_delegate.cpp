#include "app/widgets/find_delegate.h"

#include "app/models/find_row.h"
#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/risk_roles.h"
#include "app/style/style.h"
#include "app/widgets/words.h"
#include "scan/matching/trace.h"

#include <QPainter>
#include <QTreeView>

namespace tidwen {

namespace {

using FindKind = FindRow::Kind;

FindKind kindOf(const QModelIndex& index) {
    return static_cast<FindKind>(index.data(FindRow::kind).toInt());
}

TraceRisk riskOf(const QModelIndex& index, int role = FindRow::risk) {
    return static_cast<TraceRisk>(index.data(role).toInt());
}

class FindPainter : public RowPainter {
  public:
    FindPainter(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index,
                const FindDelegate& delegate)
        : RowPainter(painter, option, index),
          places_(delegate.placesIn(option.rect, index, option.direction)) {}

    void paint() {
        switch (kindOf(index_)) {
        case FindKind::application:
        case FindKind::tier:
        case FindKind::byHand:
            return paintTier();
        case FindKind::group:
            return text(at(scaled(34), 0, width() - scaled(34), height()), Type::second, Role::second,
                        words(Qt::DisplayRole));
        case FindKind::item:
            return paintItem();
        }
    }

  private:
    void paintTier() {
        ground(option_.rect);
        const bool isOpen = option_.state.testFlag(QStyle::State_Open);
        paintIcon(painter_, places_.arrow,
                  isOpen ? QStringLiteral("chevron-down") : QStringLiteral("chevron-right"),
                  colors()[Role::text]);
        box(places_.box);
        int x = scaled(64);
        if (kindOf(index_) == FindKind::tier) {
            const int dot = scaled(10);
            fillRounded(painter_, middle(x, dot), colors()[roles(riskOf(index_)).mark], dot / 2.0);
            x += scaled(20);
        }
        const auto title = words(Qt::DisplayRole);
        const int size = scaled(90);
        const int taken =
            qMin(QFontMetrics(textFont(Type::strong)).horizontalAdvance(title) + 2, width() - x - size);
        text(at(x, 0, taken, height()), Type::strong, Role::text, title);
        x += taken + scaled(10);
        text(at(x, 0, width() - x - size, height()), Type::second, Role::second, words(FindRow::second));
        text(at(width() - size - scaled(10), 0, size, height()), Type::second, Role::second,
             words(FindRow::size), Qt::AlignRight);
    }

    void paintItem() {
        ground(option_.rect);
        box(places_.box);
        const int icon = scaled(18);
        paintIcon(painter_, at(scaled(60), scaled(12), icon, icon), words(FindRow::icon),
                  colors()[Role::second]);
        twoLines(scaled(88), paintFigures(), words(Qt::DisplayRole), words(FindRow::second));
    }

    /// Size, bar and badge at the far side; gives where the words must end.
    int paintFigures() {
        const int sizeWidth = scaled(64), barWidth = scaled(56), space = scaled(10);
        int x = width() - space - sizeWidth;
        text(at(x, 0, sizeWidth, height()), Type::body, Role::second, words(FindRow::size), Qt::AlignRight);
        const bool hasRoom = width() > scaled(430); // for more than the words
        if (hasRoom) x -= barWidth + space;
        const double share = index_.data(FindRow::share).toDouble();
        if (share >= 0 && hasRoom) {
            const int thick = scaled(4);
            fillRounded(painter_, at(x, (height() - thick) / 2, barWidth, thick), colors()[Role::track], 2);
            const int part = qMax(1, qRound(barWidth * qMin(1.0, share)));
            fillRounded(painter_, at(x, (height() - thick) / 2, part, thick), colors()[Role::accent], 2);
        }
        x -= space;
        const auto badgeWords = words(FindRow::badge);
        if (badgeWords.isEmpty()) return x;
        const auto look = index_.data(FindRow::badgeRisk).toInt() == static_cast<int>(TraceRisk::safe)
                              ? RiskRoles{Role::second, Role::hover}
                              : roles(riskOf(index_, FindRow::badgeRisk));
        return badge(x, qMax(scaled(40), (x - scaled(88)) / 2), badgeWords, look.mark, look.ground) - space;
    }

    RowDelegate::Places places_;
};

} // namespace

RowDelegate::Places FindDelegate::placesIn(const QRect& row, const QModelIndex& index,
                                           Qt::LayoutDirection direction) const {
    if (!index.isValid()) return {};
    const int size = scaled(18);
    const auto at = [&](int x) {
        return QStyle::visualRect(direction, row,
                                  QRect(row.left() + x, row.top() + (row.height() - size) / 2, size, size));
    };
    const auto kind = kindOf(index);
    if (kind == FindKind::group) return {};
    if (kind == FindKind::item) return {.box = at(scaled(33))};
    return {.arrow = at(scaled(10)), .box = at(scaled(37))};
}

QSize FindDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const auto* view = qobject_cast<const QTreeView*>(option.widget);
    const bool isUniform = view && view->uniformRowHeights();
    switch (isUniform ? FindKind::item : kindOf(index)) {
    case FindKind::group:
        return {scaled(100), scaled(26)};
    case FindKind::item:
        return {scaled(100), scaled(44)};
    default:
        return {scaled(100), scaled(40)};
    }
}

void FindDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    painter->save();
    FindPainter(*painter, option, index, *this).paint();
    painter->restore();
}

} // namespace tidwen
