#pragma once

#include "platform/system.h"
#include "removal/removal_choice.h"

#include <functional>

class QWidget;

namespace tidwen {

class AppIcons;
class Sheet;
struct Mac;

/// Asks before what is chosen goes. Return confirms only when everything can be put back. The sheet stands
/// until `confirm` closes it.
Sheet* openConfirmSheet(QWidget* window, const RemovalChoice& choice, const Mac& mac, AppIcons& icons,
                        const std::function<void()>& confirm);
/// The numbered steps of what would run, readable and to be copied.
Sheet* openStepsSheet(QWidget* window, const RemovalChoice& choice, const System& system);

} // namespace tidwen
