#pragma once

#include "base/log.h"
#include "platform/login_item.h"

#include <memory>

namespace tidwen {

/// Starts the application at login, as Login Items in System Settings lists it. Only for the main program of
/// a bundle. The user may have to approve it there; then its pane is opened, once for each attempt.
class MainAppLoginItem : public LoginItem {
  public:
    /// `other`: the terminal's way, which is switched off in favour of this one. `log` outlives this.
    MainAppLoginItem(std::unique_ptr<LoginItem> other, Log& log) : other_(std::move(other)), log_(log) {}

    bool isEnabled() const override;
    bool setEnabled(bool enabled) override;

  private:
    std::unique_ptr<LoginItem> other_;
    Log& log_;
};

} // namespace tidwen
