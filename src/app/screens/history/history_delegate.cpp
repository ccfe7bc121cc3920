#include "app/screens/history/history_delegate.h"

#include "app/models/app_icons.h"
#include "app/models/history_list.h"
#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/widgets/row_delegate.h"
#include "base/path.h"

#include <QPainter>

namespace tidwen {

namespace {

/// The state of the run at the far side; gives its width.
int paintBadge(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index) {
    const auto words = index.data(HistoryList::badge).toString();
    if (words.isEmpty()) return 0;
    const bool isGood = index.data(HistoryList::badgeIsGood).toBool();
    painter.setFont(textFont(Type::section));
    const int wide = painter.fontMetrics().horizontalAdvance(words) + scaled(14);
    const int high = painter.fontMetrics().height() + scaled(6);
    const QRect row = option.rect;
    const auto place = QStyle::visualRect(
        option.direction, row,
        QRect(row.right() - wide - scaled(16), row.top() + (row.height() - high) / 2, wide, high));
    fillRounded(painter, place, colors()[isGood ? Role::safeGround : Role::lookGround], 5);
    painter.setPen(colors()[isGood ? Role::safe : Role::look]);
    painter.drawText(place, Qt::AlignCenter | Qt::TextSingleLine, words);
    return wide + scaled(24);
}

void paintApp(QPainter& painter, const QRect& place, const QModelIndex& index, AppIcons& icons) {
    const auto bundle = index.data(HistoryList::bundle).toByteArray().toStdString();
    const auto icon =
        bundle.empty() ? QPixmap() : icons.icon(Path(bundle), devicePixels(painter, place.width()));
    if (!icon.isNull()) return paintPicture(painter, place, icon);
    paintTile(painter, place, index.data().toString(),
              index.data(HistoryList::bundleID).toString().toStdString());
}

bool isHeading(const QModelIndex& index) {
    return index.data(HistoryList::isHeading).toBool();
}

void paintDay(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index) {
    const auto place = option.rect.adjusted(0, scaled(8), 0, -scaled(4));
    painter.setFont(textFont(Type::strong));
    painter.setPen(colors()[Role::text]);
    painter.drawText(
        place,
        static_cast<int>(QStyle::visualAlignment(option.direction, Qt::AlignLeft | Qt::AlignVCenter))
            | Qt::TextSingleLine,
        painter.fontMetrics().elidedText(index.data().toString(), Qt::ElideMiddle, place.width()));
}

} // namespace

QSize HistoryDelegate::sizeHint(const QStyleOptionViewItem& /*option*/, const QModelIndex& index) const {
    const int high = isHeading(index) ? lineHeight(Type::strong) + scaled(16) : scaled(60);
    return {scaled(200), high};
}

void HistoryDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    painter->save();
    if (isHeading(index)) {
        paintDay(*painter, option, index);
        return painter->restore();
    }
    const QRect row = option.rect.adjusted(0, scaled(2), 0, -scaled(2));
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    fillRounded(*painter, row, colors()[isSelected ? Role::chosen : Role::surface], 11);
    const auto at = [&](int x, int y, int w, int h) {
        return QStyle::visualRect(option.direction, row, QRect(row.left() + x, row.top() + y, w, h));
    };
    const int tile = scaled(40);
    paintApp(*painter, at(scaled(14), (row.height() - tile) / 2, tile, tile), index, icons_);
    const int end = row.width() - scaled(16) - paintBadge(*painter, option, index);
    const int x = scaled(66), top = (row.height() - lineHeight(Type::body) - lineHeight(Type::second)) / 2;
    const auto draw = [&](int y, Type type, Role role, const QString& words) {
        painter->setFont(textFont(type));
        painter->setPen(colors()[role]);
        painter->drawText(
            at(x, y, end - x, lineHeight(type)),
            static_cast<int>(QStyle::visualAlignment(option.direction, Qt::AlignLeft | Qt::AlignVCenter))
                | Qt::TextSingleLine,
            painter->fontMetrics().elidedText(words, Qt::ElideMiddle, end - x));
    };
    draw(top, Type::body, Role::text, index.data().toString());
    draw(top + lineHeight(Type::body), Type::second, Role::second,
         index.data(HistoryList::second).toString());
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setBrush(Qt::NoBrush);
        painter->setPen(QPen(colors()[Role::accent], 2));
        painter->drawRoundedRect(QRectF(row).adjusted(1, 1, -1, -1), 11, 11);
    }
    painter->restore();
}

} // namespace tidwen
