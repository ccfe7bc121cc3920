#include "app/models/app_icons.h"

#include "app/style/icns_image.h"
#include "base/background_step.h"
#include "base/path.h"

namespace tidwen {

namespace {

QByteArray keyOf(const Path& bundle, int pixels) {
    return QByteArray::fromStdString(bundle.string()) + '\0' + QByteArray::number(pixels);
}

} // namespace

QPixmap AppIcons::icon(const Path& bundle, int pixels) {
    const auto key = keyOf(bundle, pixels);
    if (const auto* known = icons_.object(key)) return *known;
    if (onTheirWay_.insert(key).second) read(bundle, pixels);
    return {};
}

void AppIcons::close() {
    isEnding_ = true;
    alive_.reset();
}

void AppIcons::read(const Path& bundle, int pixels) {
    inBackground(
        *this, alive_, queue_, main_,
        [&workspace = workspace_, &isEnding = isEnding_, bundle, pixels] {
            if (isEnding) return QImage();
            const auto file = workspace.iconOf(bundle);
            return file ? icnsImage(*file, pixels) : QImage();
        },
        [bundle, pixels](AppIcons& self, const QImage& image) {
            const auto key = keyOf(bundle, pixels);
            self.onTheirWay_.erase(key);
            self.icons_.insert(key, new QPixmap(QPixmap::fromImage(image)), 1 + image.sizeInBytes() / 1024);
            if (!image.isNull()) self.arrived.emit(bundle);
        });
}

} // namespace tidwen
