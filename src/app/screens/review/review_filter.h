#pragma once

#include "base/texts.h"
#include "removal/removal_flow_model.h"
#include "scan/policy/trace_category.h"

#include <functional>

class QMenu;
class QWidget;

namespace tidwen {

/// What of the finds is shown, and in which order. Made anew whenever it opens; `flow` and `texts` outlive
/// it.
struct OnlyChosen { ///< whether what is not chosen is left out
    std::function<bool()> isOn;
    std::function<void(bool)> set;
};
QMenu* reviewFilterMenu(QWidget* parent, RemovalFlowModel& flow, const Texts& texts, OnlyChosen onlyChosen);

/// Shows only this kind, or all again when only this one is shown.
void toggleCategory(RemovalFlowModel& flow, TraceCategory category);

} // namespace tidwen
