#pragma once

#include "app/widgets/find_details.h"
#include "app/widgets/panel.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "scan/matching/trace.h"

#include <string>

class QPushButton;

namespace tidwen {

/// The details of a find beside the list; where the window has no room for it, in a sheet over it.
class DetailsPane final : public Panel {
  public:
    /// `tierNotes` begins the keys of what the tiers mean here.
    DetailsPane(const Texts& texts, UserEnvironment user, FindDetails::Actions actions,
                std::string tierNotes = "review.risk.");

    void show(const Trace* trace); ///< null: nothing is current
    /// When it stands beside the list: always, or only for a find.
    enum class Stands { always, forFind };
    /// Makes the button that opens the details over a window in which the pane has no room. From now on
    /// `fold` shows the one or the other.
    QPushButton* makeButton(Stands stands);
    /// The window may have another width.
    void fold();

  private:
    void openSheet() const;

    const Texts& texts_;
    UserEnvironment user_;
    FindDetails::Actions actions_;
    std::string tierNotes_;
    FindDetails* details_;
    const Trace* shown_ = nullptr;
    QPushButton* button_ = nullptr;
    Stands stands_ = Stands::always;
};

} // namespace tidwen
