#pragma once

#include "base/texts.h"

#include <QString>
#include <functional>

class QMenu;
class QWidget;

namespace tidwen {

class Sheet;

/// Says that the volume is not there, with other Macs to open; the window below stays as it is.
Sheet* openGoneSheet(QWidget* window, const QString& name, const Texts& texts, QMenu* systems,
                     std::function<void()> lookAgain);

} // namespace tidwen
