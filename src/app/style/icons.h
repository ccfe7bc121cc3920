#pragma once

#include "app/style/palette.h"

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>
#include <string>

class QPainter;
class QRectF;

namespace tidwen {

/// One of our own icons ("search") in one colour.
void paintIcon(QPainter& painter, const QRectF& place, const QString& name, const QColor& color);
QPixmap iconPixmap(const QString& name, int size, const QColor& color, double pixelRatio);

/// The same for controls: it follows the appearance.
QIcon controlIcon(const QString& name, Role role);

/// What stands for an application without an icon: its first letter, on a ground that its identifier chooses.
void paintTile(QPainter& painter, const QRectF& place, const QString& name, const std::string& bundleID);

/// A picture of `devicePixels`, whatever its own pixel ratio.
void paintPicture(QPainter& painter, const QRectF& place, const QPixmap& picture);
/// Pixels of the screen that a length takes where `painter` paints.
int devicePixels(const QPainter& painter, double length);

} // namespace tidwen
