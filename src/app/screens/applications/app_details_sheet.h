#pragma once

#include "base/texts.h"
#include "base/timestamp.h"
#include "inventory/home_grid_model.h"

#include <functional>

class QWidget;

namespace tidwen {

class AppIcons;
class Sheet;

/// What is known of one application, and what can be done with it.
struct AppDetailsActions {
    std::function<void()> toggleProtection;
    std::function<void()> editTags;
    std::function<void()> showPermissions;
    std::function<void()> reveal;
};
/// `row` is one of an application.
Sheet* openAppDetails(QWidget* window, const HomeRow& row, AppIcons& icons, const Texts& texts, Timestamp now,
                      const AppDetailsActions& actions);

} // namespace tidwen
