#include "app/screens/applications/card_delegate.h"

#include "app/models/app_icons.h"
#include "app/models/home_list.h"
#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/widgets/row_delegate.h"
#include "base/path.h"

#include <QPainter>
#include <array>

namespace tidwen {

namespace {

constexpr int tileSize = 60;
constexpr int padding = 14;

void paintGroupHeading(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index) {
    const auto align = QStyle::visualAlignment(option.direction, Qt::AlignLeft | Qt::AlignVCenter);
    const auto title = index.data().toString();
    painter.setFont(textFont(Type::strong));
    painter.setPen(colors()[Role::text]);
    painter.drawText(option.rect, static_cast<int>(align) | Qt::TextSingleLine, title);
    const int taken = painter.fontMetrics().horizontalAdvance(title) + scaled(8);
    const bool isMirrored = option.direction == Qt::RightToLeft;
    painter.setFont(textFont(Type::second));
    painter.setPen(colors()[Role::second]);
    painter.drawText(option.rect.adjusted(isMirrored ? 0 : taken, 0, isMirrored ? -taken : 0, 0),
                     static_cast<int>(align) | Qt::TextSingleLine, index.data(HomeList::second).toString());
}

void paintGround(QPainter& painter, const QStyleOptionViewItem& option) {
    const QRectF card = option.rect;
    if (option.state.testFlag(QStyle::State_Selected))
        fillRounded(painter, card, colors()[Role::chosen], 11);
    else if (option.state.testFlag(QStyle::State_MouseOver))
        fillRounded(painter, card, colors()[Role::hover], 11);
    if (!option.state.testFlag(QStyle::State_HasFocus)) return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colors()[Role::accent], 2));
    painter.drawRoundedRect(card.adjusted(1, 1, -1, -1), 11, 11);
}

/// A dot per tag, in the colours of the tiers and the accent.
void paintTags(QPainter& painter, const QRect& line, int count) {
    constexpr std::array dots = {Role::safe, Role::accent, Role::look, Role::sensitive};
    const int dot = scaled(7), step = scaled(11);
    const int shown = qMin(count, static_cast<int>(dots.size()));
    int x = line.center().x() - (shown * step - (step - dot)) / 2;
    for (int i = 0; i < shown; ++i, x += step)
        fillRounded(painter, QRectF(x, line.top(), dot, dot), colors()[dots[static_cast<std::size_t>(i)]],
                    dot / 2.0);
}

/// What does not fit on one line is broken between the facts, not within one.
void paintFacts(QPainter& painter, const QRect& place, QString facts) {
    if (painter.fontMetrics().horizontalAdvance(facts) > place.width())
        facts.replace(QStringLiteral(" · "), QStringLiteral("\n"));
    painter.drawText(place, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, facts);
}

void paintCard(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index,
               AppIcons& icons) {
    paintGround(painter, option);
    const QRect& card = option.rect;
    const auto name = index.data().toString();
    const int tile = scaled(tileSize);
    const QRectF place(card.center().x() - tile / 2.0, card.top() + scaled(padding), tile, tile);
    const Path bundle(index.data(HomeList::bundle).toByteArray().toStdString());
    if (const auto icon = icons.icon(bundle, devicePixels(painter, tile)); !icon.isNull())
        paintPicture(painter, place, icon);
    else
        paintTile(painter, place, name, index.data(HomeList::bundleID).toString().toStdString());
    if (index.data(HomeList::isProtected).toBool()) {
        const QRectF badge(place.right() - scaled(14), place.bottom() - scaled(14), scaled(20), scaled(20));
        fillRounded(painter, badge, colors()[Role::surface], badge.width() / 2);
        paintIcon(painter, badge.adjusted(4, 4, -4, -4), QStringLiteral("lock"), colors()[Role::text]);
    }
    QRect line(card.left() + scaled(6), static_cast<int>(place.bottom()) + scaled(9),
               card.width() - scaled(12), lineHeight(Type::body));
    painter.setFont(textFont(Type::body));
    painter.setPen(colors()[Role::text]);
    painter.drawText(line, Qt::AlignCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(name, Qt::ElideMiddle, line.width()));
    line.translate(0, line.height());
    painter.setFont(textFont(Type::second));
    painter.setPen(colors()[Role::second]);
    paintFacts(painter, QRect(line.left(), line.top(), line.width(), 2 * lineHeight(Type::second)),
               index.data(HomeList::second).toString());
    const auto tags = index.data(HomeList::tags).toStringList().size();
    paintTags(painter, QRect(card.left(), card.bottom() - scaled(12), card.width(), scaled(7)),
              static_cast<int>(tags));
}

} // namespace

QSize cardSize() {
    const int text = lineHeight(Type::body) + 2 * lineHeight(Type::second);
    return {scaled(129), scaled(padding + tileSize + 9) + text + scaled(14)};
}

int headingHeight() {
    return lineHeight(Type::strong) + scaled(20);
}

QSize CardDelegate::sizeHint(const QStyleOptionViewItem& /*option*/, const QModelIndex& /*index*/) const {
    return cardSize();
}

void CardDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    painter->save();
    if (index.data(HomeList::isHeading).toBool())
        paintGroupHeading(*painter, option, index);
    else
        paintCard(*painter, option, index, icons_);
    painter->restore();
}

} // namespace tidwen
