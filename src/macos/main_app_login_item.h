#pragma once

#include "base/log.h"
#include "platform/login_item.h"

namespace tidwen {

/// Starts the application at login, as Login Items in System Settings lists it. Only for the main program of
/// a bundle. The user may have to approve it there; then its pane is opened, and not again
/// at later starts while it is refused.
class MainAppLoginItem : public LoginItem {
  public:
    /// `log` outlives this.
    explicit MainAppLoginItem(Log& log) : log_(log) {}

    bool isEnabled() const override;
    bool setEnabled(bool enabled) override;

  private:
    Log& log_;
};

} // namespace tidwen
