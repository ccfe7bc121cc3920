#pragma once

#include "app/widgets/panel.h"
#include "base/texts.h"
#include "removal/removal_phases.h"

#include <vector>

class QBoxLayout;
class QLabel;

namespace tidwen {

/// The phases of a removal: done, at work, to come.
class PhaseList final : public Panel {
  public:
    explicit PhaseList(const Texts& texts);

    /// Hidden while there are none.
    void show(const std::vector<RemovalPhase>& phases);

  private:
    struct Row {
        QLabel* title;
        QLabel* count;
    };
    bool isSameBut(const std::vector<RemovalPhase>& phases) const;
    Row addRow(const RemovalPhase& phase);
    void tell(const Row& row, const RemovalPhase& phase);

    const Texts& texts_;
    QBoxLayout* lines_;
    std::vector<RemovalPhase> shown_;
    std::vector<Row> rows_;
};

} // namespace tidwen
