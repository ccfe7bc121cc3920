#include "app/widgets/card_row_delegate.h"

#include "app/models/app_icons.h"
#include "app/models/card_row.h"
#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/style/switch_shape.h"
#include "base/path.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QStringList>

namespace tidwen {

namespace {

using Kind = CardRow::Kind;
using Control = CardRow::Control;

constexpr int rowHeight = 52;
constexpr int sideMargin = 16; ///< inside of the card
constexpr int pictureSize = 22;
constexpr int leastWords = 120; ///< the room that badges leave for them

bool isSection(const QModelIndex& index) {
    return static_cast<Kind>(index.data(CardRow::kind).toInt()) == Kind::section;
}

Control controlOf(const QModelIndex& index) {
    return static_cast<Control>(index.data(CardRow::control).toInt());
}

QSize controlSize(const QModelIndex& index) {
    switch (controlOf(index)) {
    case Control::none:
        return {};
    case Control::button: {
        const auto words = index.data(CardRow::controlWords).toString();
        return {QFontMetrics(textFont(Type::body)).horizontalAdvance(words) + scaled(28), scaled(32)};
    }
    default:
        return switchSize();
    }
}

QString hintOf(const QModelIndex& index) {
    return index.data(CardRow::second).toString();
}

/// The heading and its sentence stand side by side where there is room.
bool fitsOneLine(const QModelIndex& index, int width) {
    const auto wide = [](Type type, const QString& words) {
        return QFontMetrics(textFont(type)).horizontalAdvance(words);
    };
    return wide(Type::strong, index.data().toString()) + scaled(10) + wide(Type::second, hintOf(index))
           < width;
}

class CardPainter : public RowPainter {
  public:
    CardPainter(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index,
                const CardRowDelegate& delegate, AppIcons& icons, bool hasBoxes)
        : RowPainter(painter, option, index),
          icons_(icons),
          places_(delegate.placesIn(option.rect, index, option.direction)),
          hasBoxes_(hasBoxes) {}

    void paint() {
        if (isSection(index_)) return paintSection();
        paintCard();
        ground(QRectF(option_.rect).adjusted(scaled(6), scaled(3), -scaled(6), -scaled(3)));
        box(places_.box);
        const int x = scaled(sideMargin + (hasBoxes_ ? 28 : 0));
        paintLeading(middle(x, scaled(pictureSize)));
        const int begin = x + scaled(pictureSize + 12);
        int end = paintFarSide();
        auto badges = index_.data(CardRow::badges).toStringList();
        auto second = words(CardRow::second);
        if (haveRoom(badges, end - begin))
            for (const auto& word : badges)
                end = badge(end, width() / 3, word, Role::second, Role::hover) - scaled(6);
        else
            second = (badges << second).join(QStringLiteral(" · "));
        twoLines(begin, end - scaled(10), words(Qt::DisplayRole), second);
    }

  private:
    void paintSection() {
        const int first = lineHeight(Type::strong), second = lineHeight(Type::second);
        const bool isOneLine = fitsOneLine(index_, width());
        const int top = height() - first - scaled(8) - (isOneLine ? 0 : second);
        const auto title = words(Qt::DisplayRole);
        const int taken = QFontMetrics(textFont(Type::strong)).horizontalAdvance(title) + 2;
        text(at(0, top, width(), first), Type::strong, Role::text, title);
        if (isOneLine)
            text(at(taken + scaled(8), top, width() - taken - scaled(8), first), Type::second, Role::second,
                 hintOf(index_));
        else
            text(at(0, top + first, width(), second), Type::second, Role::second, hintOf(index_));
    }

    /// The part of the card that lies behind this row: its rounded ends where the row is the first or last.
    void paintCard() {
        const int beyond = scaled(40);
        const int last = index_.model()->rowCount(index_.parent()) - 1;
        const auto card =
            QRectF(option_.rect)
                .adjusted(.5, index_.row() == 0 ? .5 : -beyond, -.5, index_.row() == last ? -.5 : beyond);
        painter_.save();
        painter_.setClipRect(option_.rect);
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.setPen(colors()[Role::line]);
        painter_.setBrush(colors()[Role::surface]);
        painter_.drawRoundedRect(card, 11, 11);
        painter_.restore();
    }

    void paintLeading(const QRect& place) {
        const auto name = words(CardRow::appName);
        const auto bundle = index_.data(CardRow::bundle).toByteArray().toStdString();
        if (!bundle.empty())
            if (const auto icon = icons_.icon(Path(bundle), devicePixels(painter_, place.width()));
                !icon.isNull())
                return paintPicture(painter_, place, icon);
        if (!name.isEmpty()) return paintTile(painter_, place, name, words(CardRow::bundleID).toStdString());
        const int inner = scaled(18), space = (place.width() - inner) / 2;
        const bool isCaution = index_.data(CardRow::isCaution).toBool();
        paintIcon(painter_, place.adjusted(space, space, -space, -space), words(CardRow::icon),
                  colors()[isCaution ? Role::sensitive : Role::second]);
    }

    /// Beside the words; else they are said in the second line.
    bool haveRoom(const QStringList& badges, int room) const {
        const QFontMetrics metrics(textFont(Type::section));
        for (const auto& word : badges)
            room -= qMin(metrics.horizontalAdvance(word), width() / 3) + scaled(18);
        return room >= scaled(leastWords);
    }

    /// Control and size; gives where what else there is must end.
    int paintFarSide() {
        int end = width() - scaled(sideMargin);
        if (!places_.control.isEmpty()) {
            paintControl();
            end -= places_.control.width() + scaled(12);
        }
        if (const auto size = words(CardRow::size); !size.isEmpty()) {
            const int wide = QFontMetrics(textFont(Type::body)).horizontalAdvance(size) + 2;
            text(at(end - wide, 0, wide, height()), Type::body, Role::second, size, Qt::AlignRight);
            end -= wide + scaled(12);
        }
        return end;
    }

    void paintControl() {
        const auto control = controlOf(index_);
        if (control != Control::button)
            return paintSwitch(painter_, places_.control, {control == Control::on, control != Control::busy},
                               option_.direction);
        QStyleOptionButton button;
        button.rect = places_.control;
        button.text = words(CardRow::controlWords);
        button.state = QStyle::State_Enabled | QStyle::State_Raised;
        button.direction = option_.direction;
        button.palette = option_.palette;
        button.fontMetrics = QFontMetrics(textFont(Type::body));
        painter_.setFont(textFont(Type::body));
        option_.widget->style()->drawControl(QStyle::CE_PushButton, &button, &painter_);
    }

    AppIcons& icons_;
    RowDelegate::Places places_;
    bool hasBoxes_;
};

} // namespace

CardRowDelegate::CardRowDelegate(Boxes boxes, AppIcons& icons)
    : RowDelegate(nullptr),
      boxes_(boxes),
      icons_(icons),
      following_(icons.arrived.connect([this](const Path&) {
          if (auto* view = qobject_cast<QAbstractItemView*>(parent())) view->viewport()->update();
      })) {}

RowDelegate::Places CardRowDelegate::placesIn(const QRect& row, const QModelIndex& index,
                                              Qt::LayoutDirection direction) const {
    if (!index.isValid() || isSection(index)) return {};
    const auto at = [&](int x, const QSize& size) {
        const int top = row.top() + (row.height() - size.height()) / 2;
        return QStyle::visualRect(direction, row, QRect(QPoint(row.left() + x, top), size));
    };
    Places places;
    const auto isBox = boxes_ == Boxes::leading && index.data(Qt::CheckStateRole).isValid();
    if (isBox) places.box = at(scaled(sideMargin), {scaled(18), scaled(18)});
    if (const auto size = controlSize(index); !size.isEmpty())
        places.control = at(row.width() - scaled(sideMargin) - size.width(), size);
    return places;
}

QSize CardRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    if (!isSection(index)) return {scaled(100), scaled(rowHeight)};
    const auto* view = qobject_cast<const QAbstractItemView*>(option.widget);
    const bool isOneLine = !view || fitsOneLine(index, view->viewport()->width());
    const int more = isOneLine ? 0 : lineHeight(Type::second);
    return {scaled(100), lineHeight(Type::strong) + more + scaled(26)};
}

void CardRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    painter->save();
    CardPainter(*painter, option, index, *this, icons_, boxes_ == Boxes::leading).paint();
    painter->restore();
}

} // namespace tidwen
