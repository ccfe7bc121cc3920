#include "app/style/icns_image.h"

#include "platform/icon_family.h"

#include <QBuffer>
#include <QImageReader>

namespace tidwen {

namespace {

constexpr int megabytesOfOneImage = 16; ///< 1024 × 1024 pixels take four

} // namespace

QImage icnsImage(const std::string& file, int pixels) {
    const auto reduced = reducedIcon(file, static_cast<unsigned>(pixels));
    if (!reduced) return {};
    auto bytes = QByteArray::fromStdString(*reduced);
    QBuffer device(&bytes);
    if (!device.open(QIODevice::ReadOnly)) return {};
    if (QImageReader::allocationLimit() != megabytesOfOneImage)
        QImageReader::setAllocationLimit(megabytesOfOneImage);
    QImageReader reader(&device, "icns"); // no other reader is offered the bytes
    reader.setAutoDetectImageFormat(false);
    const auto image = reader.read();
    if (image.isNull()) return {};
    return image.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace tidwen
