#pragma once

#include "app/screens/removing/work_screen.h"
#include "app/shell/mac_screens.h"
#include "app/shell/open_mac.h"
#include "app/shell/place.h"
#include "app/shell/said_above.h"
#include "base/path.h"
#include "base/step_progress.h"
#include "operations/removal_operation.h"
#include "removal/flow_types.h"

#include <cstddef>
#include <optional>
#include <variant>
#include <vector>

namespace tidwen {

/// Shows the flow of a removal: the screen of the stage at which it stands, and why something failed.
class FlowDisplay {
  public:
    /// What is passed outlives it.
    FlowDisplay(OpenMac& mac, MacScreens& screens, SaidAbove& said)
        : mac_(mac), screens_(screens), said_(said) {}

    /// A search for what belongs to these applications begins; its review opens in this mode.
    void expect(std::vector<Path> bundles, RemovalMode mode);
    /// The screen of the stage; of a stage that has none, that of `home`.
    void showStage(Place home);
    /// Within the stage: only what the change is about.
    void show(FlowChange change);
    /// How far the search, the sweep or the removal is.
    void showWork();

  private:
    WorkScreen::Words wordsForSearch(const stage::Scanning& scanning,
                                     const std::optional<StepProgress>& step) const;
    std::vector<WorkScreen::Application> lookedAt(const Path& atWork) const;
    void showError();

    OpenMac& mac_;
    MacScreens& screens_;
    SaidAbove& said_;
    std::size_t shownStage_ = std::variant_npos;
    std::vector<Path> lookedAt_;   ///< the bundles of the latest search
    bool beginsWithReset_ = false; ///< the review that is being prepared
};

} // namespace tidwen
