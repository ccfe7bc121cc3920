#pragma once

class QWidget;

namespace tidwen {

/// Milliseconds that a change of the screen takes; 0 where the desktop asks for less motion.
int motionTime();

/// Lets what a widget shows now appear out of its ground.
void fadeIn(QWidget& widget);

/// Moves a widget the last few pixels to its place.
void settle(QWidget& widget);

} // namespace tidwen
