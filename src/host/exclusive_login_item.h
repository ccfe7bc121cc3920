#pragma once

#include "platform/login_item.h"

#include <memory>

namespace tidwen {

/// The two ways in which a Mac starts Tidwen at login: the application's own item and the terminal's launch
/// agent. They exclude each other, because two programs would watch one Trash. The application's comes first:
/// it takes the agent's place, and while it is on, the terminal adds no agent.
class ExclusiveLoginItem : public LoginItem {
  public:
    enum class Program { application, terminal };

    /// `self`: which of them this program is.
    ExclusiveLoginItem(std::unique_ptr<LoginItem> application, std::unique_ptr<LoginItem> agent, Program self)
        : application_(std::move(application)), agent_(std::move(agent)), self_(self) {}

    /// Either of them is on.
    bool isEnabled() const override;
    /// Leaves at most one of them on; off switches off both.
    bool setEnabled(bool enabled) override;
    bool startsAnother() const override;

  private:
    std::unique_ptr<LoginItem> application_, agent_;
    Program self_;
};

} // namespace tidwen
