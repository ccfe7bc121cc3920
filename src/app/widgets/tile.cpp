#include "app/widgets/tile.h"

#include "app/models/app_icons.h"
#include "app/style/icons.h"
#include "app/style/metrics.h"

#include <QPainter>

namespace tidwen {

Tile::Tile(int size, AppIcons& icons)
    : icons_(icons), following_(icons.arrived.connect([this](const Path& bundle) {
          if (bundle == bundle_) update();
      })) {
    setFixedSize(scaled(size), scaled(size));
}

void Tile::show(const QString& name, const std::string& bundleID, const Path& bundle) {
    name_ = name;
    bundleID_ = bundleID;
    bundle_ = bundle;
    setAccessibleName(name);
    update();
}

void Tile::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (!isEnabled()) painter.setOpacity(0.4);
    const auto icon = icons_.icon(bundle_, devicePixels(painter, width()));
    if (icon.isNull())
        paintTile(painter, rect(), name_, bundleID_);
    else
        paintPicture(painter, rect(), icon);
}

} // namespace tidwen
