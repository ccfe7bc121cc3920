#pragma once

namespace tidwen {

enum class ShownAppearance { desktops, light, dark };

/// What AppKit draws the program's title bars, menus, panels and alerts in. Main thread only.
void setApplicationAppearance(ShownAppearance appearance);

} // namespace tidwen
