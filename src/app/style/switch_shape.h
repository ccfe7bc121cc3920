#pragma once

#include <QRect>

class QPainter;

namespace tidwen {

struct SwitchLook {
    bool isOn = false;
    bool isEnabled = true;
};
QSize switchSize();
/// A switch as people know it from their settings: its knob lies at the far side when it is on.
void paintSwitch(QPainter& painter, const QRect& place, SwitchLook look, Qt::LayoutDirection direction);

} // namespace tidwen
