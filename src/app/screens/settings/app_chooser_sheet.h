#pragma once

#include "base/texts.h"
#include "scan/applications/installed_app.h"

#include <QString>
#include <functional>
#include <vector>

class QWidget;

namespace tidwen {

class Sheet;

/// Asks for one of `apps`, with a search, for there may be thousands. `choose`: also the word on the button;
/// `then` is called with the chosen one.
Sheet* openAppChooser(QWidget* window, const QString& title, const QString& choose,
                      std::vector<SharedApp> apps, const Texts& texts,
                      std::function<void(const InstalledApp&)> then);

} // namespace tidwen
