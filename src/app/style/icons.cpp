#include "app/style/icons.h"

#include "app/style/style.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <array>

namespace tidwen {

namespace {

struct Gradient {
    QRgb top;
    QRgb bottom;
};

constexpr std::array gradients = {
    Gradient{0x5aa2ff, 0x2460d8}, Gradient{0xff9a6b, 0xe0463c}, Gradient{0x6fd8a6, 0x1c8f62},
    Gradient{0xffd366, 0xe39c12}, Gradient{0xc08bff, 0x7a3fe0}, Gradient{0x8b98ac, 0x4a566b},
};

/// The same in every run, unlike the toolkit's hash.
std::size_t steadyHash(const std::string& text) {
    std::size_t hash = 5381;
    for (const unsigned char byte : text)
        hash = hash * 33 + byte;
    return hash;
}

/// The first character as people see it: never half of a pair.
QString firstLetter(const QString& name) {
    auto text = name.trimmed();
    while (!text.isEmpty() && text.at(0).category() == QChar::Other_Format) // a mark of direction
        text.remove(0, 1);
    if (text.isEmpty()) return QStringLiteral("?");
    const auto letter = text.left(text.at(0).isHighSurrogate() ? 2 : 1);
    return letter.toUpper();
}

/// Asks for its colour when it is painted.
class ControlIcon final : public QIconEngine {
  public:
    ControlIcon(QString name, Role role) : name_(std::move(name)), role_(role) {}

    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State /*state*/) override {
        paintIcon(*painter, place, name_, colors()[mode == QIcon::Disabled ? Role::second : role_]);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    QIconEngine* clone() const override { return new ControlIcon(name_, role_); }

  private:
    QString name_;
    Role role_;
};

} // namespace

QIcon controlIcon(const QString& name, Role role) {
    return QIcon(new ControlIcon(name, role)); // the icon owns it
}

void paintIcon(QPainter& painter, const QRectF& place, const QString& name, const QColor& color) {
    const auto ratio = painter.device()->devicePixelRatioF();
    const auto pixmap = iconPixmap(name, qRound(place.width()), color, ratio);
    painter.drawPixmap(place.topLeft(), pixmap);
}

QPixmap iconPixmap(const QString& name, int size, const QColor& color, double pixelRatio) {
    const bool isMirrored = QGuiApplication::isRightToLeft() && name == QStringLiteral("chevron-right");
    const auto key = QStringLiteral("tidwen/%1/%2/%3/%4/%5")
                         .arg(name)
                         .arg(size)
                         .arg(color.rgba())
                         .arg(pixelRatio)
                         .arg(isMirrored);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) return pixmap;
    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly)) return {};
    auto drawing = file.readAll();
    drawing.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(drawing);
    pixmap = QPixmap(qRound(size * pixelRatio), qRound(size * pixelRatio));
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter);
    painter.end();
    if (isMirrored) pixmap = pixmap.transformed(QTransform::fromScale(-1, 1)); // it points the way one reads
    pixmap.setDevicePixelRatio(pixelRatio);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

void paintPicture(QPainter& painter, const QRectF& place, const QPixmap& picture) {
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(place, picture, picture.rect());
    painter.restore();
}

int devicePixels(const QPainter& painter, double length) {
    return qRound(length * painter.device()->devicePixelRatioF());
}

void paintTile(QPainter& painter, const QRectF& outer, const QString& name, const std::string& bundleID) {
    const auto& gradient = gradients[steadyHash(bundleID) % gradients.size()];
    const double margin = outer.width() * 0.05; // as icons of applications leave around their shape
    const auto place = outer.adjusted(margin, margin, -margin, -margin);
    QLinearGradient fill(place.topLeft(), place.bottomLeft());
    fill.setColorAt(0, QColor::fromRgb(gradient.top));
    fill.setColorAt(1, QColor::fromRgb(gradient.bottom));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    const auto radius = place.width() * 0.23;
    painter.drawRoundedRect(place, radius, radius);
    QFont letter = QApplication::font();
    letter.setPixelSize(qMax(1, qRound(place.height() * 0.43)));
    letter.setWeight(QFont::DemiBold);
    painter.setFont(letter);
    painter.setPen(Qt::white);
    painter.drawText(place, Qt::AlignCenter, firstLetter(name));
    painter.restore();
}

} // namespace tidwen
