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

} // namespace

SizeBar::SizeBar() {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void SizeBar::show(std::vector<Part> parts) {
    parts_ = std::move(parts);
    QStringList words;
    for (const auto& part : parts_)
        words << part.title + QLatin1Char(' ') + part.size;
    setAccessibleName(words.join(QStringLiteral(", ")));
    setVisible(!parts_.empty());
    update();
}

QSize SizeBar::sizeHint() const {
    return {scaled(200), barHeight() + scaled(10) + QFontMetrics(textFont(Type::second)).height()};
}

void SizeBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    std::int64_t whole = 0;
    for (const auto& part : parts_)
        whole += part.bytes;
    QPainterPath clip;
    clip.addRoundedRect(QRectF(0, 0, width(), barHeight()), barHeight() / 2.0, barHeight() / 2.0);
    double x = 0;
    int words = 0;
    places_.assign(parts_.size(), {});
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        const auto& part = parts_[i];
        painter.setOpacity(part.isFaint ? 0.35 : 1);
        const int wordsBegin = words;
        const double wide =
            whole > 0 ? width() * static_cast<double>(part.bytes) / static_cast<double>(whole) : 0;
        const auto color = QColor::fromRgb(partColors[i % partColors.size()]);
        painter.setClipPath(clip);
        const auto place =
            QStyle::visualRect(layoutDirection(), rect(), QRectF(x, 0, wide, barHeight()).toRect());
        painter.fillRect(QRectF(place).adjusted(0, 0, i + 1 < parts_.size() ? -2 : 0, 0), color);
        x += wide;
        painter.setClipping(false);
        const int top = barHeight() + scaled(8), line = height() - top;
        const auto draw = [&](Type type, Role role, const QString& text) {
            painter.setFont(textFont(type));
            painter.setPen(colors()[role]);
            const int advance = painter.fontMetrics().horizontalAdvance(text) + 2;
            painter.drawText(QStyle::visualRect(layoutDirection(), rect(), QRect(words, top, advance, line)),
                             Qt::AlignVCenter | Qt::TextSingleLine, text);
            words += advance;
        };
        const int dot = scaled(8);
        fillRounded(
            painter,
            QStyle::visualRect(layoutDirection(), rect(), QRect(words, top + (line - dot) / 2, dot, dot)),
            color, dot / 2.0);
        words += dot + scaled(5);
        draw(Type::section, Role::text, part.title);
        words += scaled(4);
        draw(Type::second, Role::second, part.size);
        places_[i] = QRegion(place)
                     + QStyle::visualRect(layoutDirection(), rect(),
                                          QRect(wordsBegin, barHeight(), words - wordsBegin, height()));
        words += scaled(14);
    }
}

void SizeBar::mousePressEvent(QMouseEvent* event) {
    for (std::size_t i = 0; i < places_.size() && i < parts_.size(); ++i)
        if (places_[i].contains(event->pos()) && parts_[i].pick) {
            const auto pick = parts_[i].pick; // which shows other parts
            return pick();
        }
}

} // namespace tidwen
