#pragma once

#include "removal/chosen_items.h"
#include "removal/findings.h"
#include "removal/removal_plan.h"
#include "removal/removal_refusal.h"
#include "removal/removal_subject.h"
#include "removal/removal_summary.h"
#include "removal/stay_reason.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

class StayingClaims;

/// What goes of one application, group of leftovers or offer; never nothing.
struct GoingGroup {
    const FoundGroup* group = nullptr;
    std::vector<const Trace*> traces = {};
};

/// What stays of one; never nothing.
struct StayingGroup {
    struct Item {
        const Trace* trace = nullptr;
        StayReason reason = StayReason::notChosen;
        const AppTarget* claimant = nullptr; ///< who keeps it when it is `claimed`
    };
    const FoundGroup* group = nullptr;
    std::vector<Item> items = {};
};

/// What of the findings is chosen for a removal, and everything that follows from it: what goes, what stays
/// and why, the summary, and what the whole is called. Worked out once with each change. A copy is
/// independent and shares the findings, which live as long as one of them. Used by one thread at a time.
class RemovalChoice {
  public:
    RemovalChoice(); ///< from nothing
    RemovalChoice(std::shared_ptr<const Findings> findings, RemovalSubject::Kind kind);

    const Findings& findings() const { return *findings_; }
    RemovalMode mode() const { return mode_; }
    /// Whether it was chosen. It may stay all the same: another application that stays claims it.
    bool isSelected(const Uuid& id) const;
    /// What goes, each item once: neither what goes along with a folder, nor what an application of the scan
    /// that stays claims too.
    const std::vector<GoingGroup>& going() const { return going_; }
    /// The same as a plan takes it. Copies every trace.
    std::vector<RemovalTarget> targets() const;
    /// What stays, and is neither meant to by the mode nor goes along with a folder. What only the user can
    /// deal with is among it when the application goes.
    const std::vector<StayingGroup>& staying() const { return staying_; }
    /// The same for a report, which outlives the findings. Copies every trace.
    std::vector<Remainder> remainders() const;
    const RemovalSummary& summary() const { return summary_; }
    const RemovalSubject& subject() const { return subject_; }
    /// Why nothing is chosen, so that there is nothing to begin with.
    const std::optional<RemovalRefusal>& refusal() const { return refusal_; }

    // The selection never holds what the mode leaves in place or what only the user can deal with.
    void setSelected(const std::vector<Uuid>& ids, bool selected);
    /// Exactly these. Those of them that are `named` one by one go also when another application of the
    /// scan that stays claims them.
    void select(const std::vector<Uuid>& ids, const std::vector<Uuid>& named = {});
    /// What is taken without further choice (`takenByDefault`). Of an application that cannot be removed that
    /// is nothing, and until something is chosen a removal is refused with the reason.
    void selectDefaults();
    /// Only scanned applications can be reset. The way back gives the selection back that was there.
    void setMode(RemovalMode mode);
    /// Leaves a group out, whatever is selected, with what its application claims of the others' items.
    void leaveOut(const FoundGroup& group);

  private:
    /// By the number of the trace, of the group, or of the place.
    using Flags = std::vector<bool>;

    void update();
    Flags selectedOfThoseThatGo() const;
    void leaveToThoseThatStay(Flags& goes);
    bool staysWhole(std::size_t group) const;
    void takeEachItemOnce(Flags& goes);
    bool goesAlong(std::size_t trace) const;
    void sort(const Flags& goes);
    StayingGroup::Item staying(const Trace& trace, std::size_t number) const;
    void describe();

    std::shared_ptr<const Findings> findings_;
    std::shared_ptr<StayingClaims> claims_;
    RemovalSubject::Kind kind_ = RemovalSubject::Kind::applications;
    RemovalMode mode_ = RemovalMode::uninstall;
    Flags selected_;
    Flags named_;    ///< of the selection, chosen one by one
    Flags setAside_; ///< selected, and taken by an uninstall alone: comes back with it
    Flags leftOut_;  ///< groups
    std::optional<RemovalRefusal> refusedByDefault_; ///< while nobody chose otherwise

    std::vector<const AppTarget*> keptFor_; ///< by trace: who stays and keeps what was selected
    Flags goingPlaces_;
    std::vector<GoingGroup> going_;
    std::vector<StayingGroup> staying_;
    RemovalSummary summary_;
    RemovalSubject subject_;
    std::optional<RemovalRefusal> refusal_;
};

} // namespace tidwen
