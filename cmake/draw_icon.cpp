// Draws the application's icon in all sizes of macOS: draw_icon FILE.svg FILE.icns

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSaveFile>
#include <QSvgRenderer>
#include <QtEndian>

namespace {

struct Size {
    const char* type; ///< four characters
    int pixels;
};

/// By "iconutil": those of a plain display, then those of one with twice the pixels.
constexpr Size sizes[] = {{"icp4", 16}, {"icp5", 32}, {"ic07", 128}, {"ic08", 256}, {"ic09", 512},
                          {"ic11", 32}, {"ic12", 64}, {"ic13", 256}, {"ic14", 512}, {"ic10", 1024}};

/// The shape of an icon takes 824 of 1024 pixels; the rest is for its shadow.
constexpr double margin = 100.0 / 1024;

QByteArray drawn(QSvgRenderer& shape, int pixels) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const double inset = pixels * margin;
    shape.render(&painter, QRectF(inset, inset, pixels - 2 * inset, pixels - 2 * inset));
    painter.end();
    QByteArray png;
    QBuffer buffer(&png);
    return buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG") ? png : QByteArray();
}

QByteArray chunk(const char* type, const QByteArray& content) {
    char length[4];
    qToBigEndian(static_cast<quint32>(content.size() + 8), length);
    return QByteArray(type, 4) + QByteArray(length, 4) + content;
}

} // namespace

int main(int count, char** words) {
    const QGuiApplication application(count, words);
    if (count != 3) return 2;
    QSvgRenderer shape(QString::fromLocal8Bit(words[1]));
    if (!shape.isValid()) return 1;
    QByteArray icons;
    for (const auto& [type, pixels] : sizes) {
        const auto png = drawn(shape, pixels);
        if (png.isEmpty()) return 1;
        icons += chunk(type, png);
    }
    QSaveFile file(QString::fromLocal8Bit(words[2]));
    const auto whole = chunk("icns", icons);
    return file.open(QIODevice::WriteOnly) && file.write(whole) == whole.size() && file.commit() ? 0 : 1;
}
