#include "app/widgets/tile.h"

#include "app/style/icons.h"
#include "app/style/metrics.h"

#include <QPainter>

namespace tidwen {

Tile::Tile(int size) {
    setFixedSize(scaled(size), scaled(size));
}

void Tile::show(const QString& name, const std::string& bundleID) {
    name_ = name;
    bundleID_ = bundleID;
    setAccessibleName(name);
    update();
}

void Tile::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    paintTile(painter, rect(), name_, bundleID_);
}

} // namespace tidwen
