#include "app/widgets/find_delegate.h"

#include "app/models/find_row.h"
#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/risk_roles.h"
#include "app/style/style.h"

#include <QPainter>

namespace tidwen {

namespace {

using Kind = FindRow::Kind;

Kind kindOf(const QModelIndex& index) {
    return static_cast<Kind>(index.data(FindRow::kind).toInt());
}

TraceRisk riskOf(const QModelIndex& index, int role = FindRow::risk) {
    return static_cast<TraceRisk>(index.data(role).toInt());
}

int lineHeight(Type type) {
    return QFontMetrics(textFont(type)).height();
}

/// One row while it is painted, from its leading edge.
class RowPainter {
  public:
    RowPainter(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        : painter_(painter), option_(option), index_(index) {}

    void paint() {
        switch (kindOf(index_)) {
        case Kind::application:
        case Kind::tier:
        case Kind::byHand:
            return paintTier();
        case Kind::group:
            return text(at(scaled(34), 0, width() - scaled(34), height()), Type::second, Role::second,
                        index_.data().toString());
        case Kind::item:
            return paintItem();
        }
    }

  private:
    int width() const { return option_.rect.width(); }
    int height() const { return option_.rect.height(); }
    QRect at(int x, int y, int w, int h) const {
        return QStyle::visualRect(option_.direction, option_.rect,
                                  QRect(option_.rect.left() + x, option_.rect.top() + y, w, h));
    }

    void text(const QRect& place, Type type, Role color, const QString& words,
              Qt::Alignment side = Qt::AlignLeft) {
        painter_.setFont(textFont(type));
        painter_.setPen(colors()[color]);
        const auto align = QStyle::visualAlignment(option_.direction, side | Qt::AlignVCenter);
        painter_.drawText(place, static_cast<int>(align) | Qt::TextSingleLine,
                          painter_.fontMetrics().elidedText(words, Qt::ElideMiddle, place.width()));
    }

    void paintGround() {
        const auto ground = QRectF(option_.rect).adjusted(0, 0, 0, 0);
        if (option_.state.testFlag(QStyle::State_Selected))
            fillRounded(painter_, ground, colors()[Role::chosen], 7);
        else if (option_.state.testFlag(QStyle::State_MouseOver))
            fillRounded(painter_, ground, colors()[Role::hover], 7);
        if (!option_.state.testFlag(QStyle::State_HasFocus)) return;
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.setBrush(Qt::NoBrush);
        painter_.setPen(QPen(colors()[Role::accent], 1.5));
        painter_.drawRoundedRect(ground.adjusted(1, 1, -1, -1), 7, 7);
    }

    void paintBox() {
        const auto state = index_.data(Qt::CheckStateRole);
        if (!state.isValid()) return;
        QStyleOption box;
        box.rect = FindDelegate::placesIn(option_.rect, index_, option_.direction).box;
        box.state = QStyle::State_Enabled;
        box.state.setFlag(QStyle::State_On, state.toInt() == Qt::Checked);
        box.state.setFlag(QStyle::State_NoChange, state.toInt() == Qt::PartiallyChecked);
        option_.widget->style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, &painter_);
    }

    void paintTier() {
        paintGround();
        const auto places = FindDelegate::placesIn(option_.rect, index_, option_.direction);
        const bool isOpen = option_.state.testFlag(QStyle::State_Open);
        paintIcon(painter_, places.arrow,
                  isOpen ? QStringLiteral("chevron-down") : QStringLiteral("chevron-right"),
                  colors()[Role::text]);
        paintBox();
        int x = scaled(64);
        if (kindOf(index_) == Kind::tier) {
            const int dot = scaled(10);
            fillRounded(painter_, at(x, (height() - dot) / 2, dot, dot), colors()[roles(riskOf(index_)).mark],
                        dot / 2.0);
            x += scaled(20);
        }
        const auto title = index_.data().toString();
        const int size = scaled(90);
        const int taken =
            qMin(QFontMetrics(textFont(Type::strong)).horizontalAdvance(title) + 2, width() - x - size);
        text(at(x, 0, taken, height()), Type::strong, Role::text, title);
        x += taken + scaled(10);
        text(at(x, 0, width() - x - size, height()), Type::second, Role::second,
             index_.data(FindRow::second).toString());
        text(at(width() - size - scaled(10), 0, size, height()), Type::second, Role::second,
             index_.data(FindRow::size).toString(), Qt::AlignRight);
    }

    void paintItem() {
        paintGround();
        paintBox();
        const int icon = scaled(18);
        paintIcon(painter_, at(scaled(60), scaled(12), icon, icon), index_.data(FindRow::icon).toString(),
                  colors()[Role::second]);
        const int end = paintFigures();
        const int x = scaled(88);
        const int top = (height() - lineHeight(Type::body) - lineHeight(Type::second)) / 2;
        text(at(x, top, end - x, lineHeight(Type::body)), Type::body, Role::text, index_.data().toString());
        text(at(x, top + lineHeight(Type::body), end - x, lineHeight(Type::second)), Type::second,
             Role::second, index_.data(FindRow::second).toString());
    }

    /// Size, bar and badge at the far side; gives where the words must end.
    int paintFigures() {
        const int sizeWidth = scaled(64), barWidth = scaled(56), space = scaled(10);
        int x = width() - space - sizeWidth;
        text(at(x, 0, sizeWidth, height()), Type::body, Role::second, index_.data(FindRow::size).toString(),
             Qt::AlignRight);
        x -= barWidth + space;
        const double share = index_.data(FindRow::share).toDouble();
        if (share >= 0 && width() > scaled(430)) {
            const int thick = scaled(4);
            fillRounded(painter_, at(x, (height() - thick) / 2, barWidth, thick), colors()[Role::track], 2);
            const int part = qMax(1, qRound(barWidth * qMin(1.0, share)));
            fillRounded(painter_, at(x, (height() - thick) / 2, part, thick), colors()[Role::accent], 2);
        }
        x -= space;
        const auto badge = index_.data(FindRow::badge).toString();
        if (badge.isEmpty()) return x;
        const QFontMetrics metrics(textFont(Type::section));
        const int inner = qMin(metrics.horizontalAdvance(badge) + 2, qMax(scaled(40), (x - scaled(88)) / 2));
        const int badgeHeight = metrics.height() + scaled(6);
        x -= inner + scaled(12);
        const auto place = at(x, (height() - badgeHeight) / 2, inner + scaled(12), badgeHeight);
        const auto look = index_.data(FindRow::badgeRisk).toInt() == static_cast<int>(TraceRisk::safe)
                              ? RiskRoles{Role::second, Role::hover}
                              : roles(riskOf(index_, FindRow::badgeRisk));
        fillRounded(painter_, place, colors()[look.ground], 5);
        text(place.adjusted(scaled(6), 0, -scaled(6), 0), Type::section, look.mark, badge);
        return x - space;
    }

    QPainter& painter_;
    const QStyleOptionViewItem& option_;
    const QModelIndex& index_;
};

} // namespace

FindDelegate::Places FindDelegate::placesIn(const QRect& row, const QModelIndex& index,
                                            Qt::LayoutDirection direction) {
    if (!index.isValid()) return {};
    const int size = scaled(18), box = scaled(18);
    const auto at = [&](int x, int extent) {
        return QStyle::visualRect(
            direction, row, QRect(row.left() + x, row.top() + (row.height() - extent) / 2, extent, extent));
    };
    const auto kind = kindOf(index);
    if (kind == Kind::group) return {};
    if (kind == Kind::item) return {{}, at(scaled(33), box)};
    return {at(scaled(10), size), at(scaled(37), box)};
}

QSize FindDelegate::sizeHint(const QStyleOptionViewItem& /*option*/, const QModelIndex& index) const {
    switch (kindOf(index)) {
    case Kind::group:
        return {scaled(100), scaled(26)};
    case Kind::item:
        return {scaled(100), scaled(44)};
    default:
        return {scaled(100), scaled(40)};
    }
}

void FindDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    painter->save();
    RowPainter(*painter, option, index).paint();
    painter->restore();
}

} // namespace tidwen
