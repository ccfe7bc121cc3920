#include "app/screens/review/size_bar.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStringList>
#include <array>

namespace tidwen {

namespace {

/// One for each part, in both appearances; words stand below each.
constexpr std::array<QRgb, 4> partColors = {0x3f7bea, 0x9b6be8, 0xe8953a, 0x7d8796};

int barHeight() {
    return scaled(10);
}

int lineHeight() {
    return QFontMetrics(textFont(Type::second)).height();
}

int wordsBegin() {
    return scaled(13); // behind the dot
}

int advance(Type type, const QString& words) {
    return QFontMetrics(textFont(type)).horizontalAdvance(words) + 2;
}

} // namespace

SizeBar::SizeBar() {
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void SizeBar::show(std::vector<Part> parts) {
    parts_ = std::move(parts);
    QStringList words;
    for (const auto& part : parts_)
        words << part.title + QLatin1Char(' ') + part.size;
    setAccessibleName(words.join(QStringLiteral(", ")));
    setVisible(!parts_.empty());
    updateGeometry();
    update();
}

QSize SizeBar::sizeHint() const {
    return {scaled(200), heightForWidth(width())};
}

int SizeBar::heightForWidth(int width) const {
    const auto places = wordPlaces(width);
    return (places.empty() ? barHeight() : places.back().bottom() + 1) + scaled(2);
}

std::vector<QRect> SizeBar::wordPlaces(int width) const {
    std::vector<QRect> places;
    int x = 0, y = barHeight() + scaled(8);
    for (const auto& part : parts_) {
        const int wished =
            wordsBegin() + advance(Type::section, part.title) + scaled(4) + advance(Type::second, part.size);
        const int wide = qMin(wished, width);
        if (x > 0 && x + wide > width) {
            x = 0;
            y += lineHeight() + scaled(3);
        }
        places.emplace_back(x, y, wide, lineHeight());
        x += wide + scaled(14);
    }
    return places;
}

void SizeBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    std::int64_t whole = 0;
    for (const auto& part : parts_)
        whole += part.bytes;
    QPainterPath clip;
    clip.addRoundedRect(QRectF(0, 0, width(), barHeight()), barHeight() / 2.0, barHeight() / 2.0);
    const auto words = wordPlaces(width());
    places_.assign(parts_.size(), {});
    double x = 0;
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        const auto& part = parts_[i];
        painter.setOpacity(part.isFaint ? 0.35 : 1);
        const auto color = QColor::fromRgb(partColors[i % partColors.size()]);
        const double wide =
            whole > 0 ? width() * static_cast<double>(part.bytes) / static_cast<double>(whole) : 0;
        const auto place =
            QStyle::visualRect(layoutDirection(), rect(), QRectF(x, 0, wide, barHeight()).toRect());
        painter.setClipPath(clip);
        painter.fillRect(QRectF(place).adjusted(0, 0, i + 1 < parts_.size() ? -2 : 0, 0), color);
        painter.setClipping(false);
        x += wide;
        const auto below = QStyle::visualRect(layoutDirection(), rect(), words[i]);
        paintWords(painter, part, color, below);
        places_[i] = QRegion(place) + below;
    }
}

void SizeBar::paintWords(QPainter& painter, const Part& part, const QColor& color, const QRect& place) const {
    const auto within = [&](int x, int y, int wide, int high) {
        return QStyle::visualRect(layoutDirection(), place,
                                  QRect(place.left() + x, place.top() + y, wide, high));
    };
    const int dot = scaled(8);
    fillRounded(painter, within(0, (place.height() - dot) / 2, dot, dot), color, dot / 2.0);
    const int size = advance(Type::second, part.size);
    const int title =
        qMin(advance(Type::section, part.title), place.width() - wordsBegin() - scaled(4) - size);
    const auto draw = [&](int x, int wide, Type type, Role role, const QString& text) {
        painter.setFont(textFont(type));
        painter.setPen(colors()[role]);
        painter.drawText(within(x, 0, wide, place.height()), Qt::AlignVCenter | Qt::TextSingleLine,
                         painter.fontMetrics().elidedText(text, Qt::ElideRight, wide));
    };
    draw(wordsBegin(), title, Type::section, Role::text, part.title);
    draw(wordsBegin() + title + scaled(4), size, Type::second, Role::second, part.size);
}

void SizeBar::mousePressEvent(QMouseEvent* event) {
    for (std::size_t i = 0; i < places_.size() && i < parts_.size(); ++i)
        if (places_[i].contains(event->pos()) && parts_[i].pick) {
            const auto pick = parts_[i].pick; // which shows other parts
            return pick();
        }
}

} // namespace tidwen
