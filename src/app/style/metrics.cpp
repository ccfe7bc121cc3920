#include "app/style/metrics.h"

#include <QApplication>
#include <QFontInfo>
#include <array>

namespace tidwen {

namespace {

struct Form {
    int size; ///< where the body has `designTextSize`
    QFont::Weight weight;
};

/// In the order of `Type`.
constexpr std::array forms = {
    Form{20, QFont::DemiBold}, Form{17, QFont::DemiBold}, Form{13, QFont::Normal},
    Form{13, QFont::DemiBold}, Form{12, QFont::Normal},   Form{11, QFont::DemiBold},
};

/// Of the body's font. Every part of every row asks for it, so it is kept until another font is set.
int textSize() {
    static QFont known;
    static int size = 0;
    const auto font = QApplication::font();
    if (size == 0 || !font.isCopyOf(known)) {
        known = font;
        // Asked of the font itself it costs no search for a file, for which the first window would wait.
        size = font.pixelSize() > 0 ? font.pixelSize() : QFontInfo(font).pixelSize();
    }
    return size;
}

} // namespace

int scaled(double length) {
    return qRound(length * textSize() / designTextSize);
}

QFont textFont(Type type) {
    const auto& form = forms[static_cast<std::size_t>(type)];
    QFont font = QApplication::font();
    font.setPixelSize(qMax(1, scaled(form.size)));
    font.setWeight(form.weight);
    return font;
}

} // namespace tidwen
