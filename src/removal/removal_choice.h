#pragma once

#include "base/uuid.h"
#include "operations/removal_operation.h"
#include "removal/chosen_items.h"
#include "removal/findings.h"
#include "removal/removal_plan.h"
#include "removal/removal_refusal.h"
#include "removal/removal_subject.h"
#include "removal/removal_summary.h"
#include "removal/stay_reason.h"
#include "scan/applications/app_target.h"
#include "scan/matching/trace.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

class StayingClaims;

/// What is removed of one application, group of leftovers or offer; never empty.
struct GoingGroup {
    const FoundGroup* group = nullptr;
    std::vector<const Trace*> traces = {};
};

/// What stays of one; never empty.
struct StayingGroup {
    struct Item {
        const Trace* trace = nullptr;
        StayReason reason = StayReason::notChosen;
        const AppTarget* claimant = nullptr; ///< set when the reason is `claimed`
    };
    const FoundGroup* group = nullptr;
    std::vector<Item> items = {};
};

/// The selection for a removal, and everything derived from it: what is removed, what stays and why, the
/// summary and the name of the whole. Recomputed on each change. A copy is independent and shares the
/// findings, which it keeps alive. Not thread-safe.
class RemovalChoice {
  public:
    RemovalChoice(); ///< no findings
    RemovalChoice(std::shared_ptr<const Findings> findings, RemovalSubject::Kind kind);

    const Findings& findings() const { return *findings_; }
    std::shared_ptr<const Findings> shareFindings() const { return findings_; }
    RemovalMode mode() const { return mode_; }
    /// Whether it is selected. It may stay nevertheless: a remaining application may claim it.
    bool isSelected(const Uuid& id) const;
    bool isSelected(std::size_t number) const { return selected_[number]; } ///< as `Findings::number`
    /// How many are selected, whether they stay or not; of what a list shows, so without the reset of
    /// permissions that were never given.
    std::size_t selectedCount() const;
    /// What is removed, each item once: without items inside a folder that is also removed, and without items
    /// that a remaining application of the scan also claims.
    const std::vector<GoingGroup>& going() const { return going_; }
    /// `going` in the form a plan needs. Copies every trace.
    std::vector<RemovalTarget> targets() const;
    /// What stays, except what the mode keeps and what is moved with a folder. Includes what only the user
    /// can remove if the application is removed. Gathered on each call, for with many finds it takes longer
    /// than a change of the selection may.
    std::vector<StayingGroup> staying() const;
    /// `staying` for a report, which outlives the findings. An item that several of them found is listed
    /// once. Copies every trace.
    std::vector<Remainder> remainders() const;
    const RemovalSummary& summary() const { return summary_; }
    const RemovalSubject& subject() const { return subject_; }
    /// Why nothing is selected, so that a removal cannot begin.
    const std::optional<RemovalRefusal>& refusal() const { return refusal_; }

    // The selection never contains what the mode keeps or what only the user can remove.
    void setSelected(const std::vector<Uuid>& ids, bool selected);
    /// Selects exactly these. Those in `named`, which the user chose individually, are removed even if a
    /// remaining application of the scan also claims them.
    void select(const std::vector<Uuid>& ids, const std::vector<Uuid>& named = {});
    /// Selects the defaults (`takenByDefault`). An application that cannot be removed has none, and until
    /// something is selected a removal is refused with that reason.
    void selectDefaults();
    /// The mode of an earlier search, and for what of the same application it found too, what was selected of
    /// it then; the defaults for the rest. What may no longer go by default is not selected.
    void selectAsBefore(const RemovalChoice& earlier);
    /// Only scanned applications can be reset. Switching back restores the previous selection.
    void setMode(RemovalMode mode);
    /// Leaves a group out whatever is selected, with what its application claims of the others' items.
    void leaveOut(const FoundGroup& group);

  private:
    /// Indexed by the number of the trace, group or place.
    using Flags = std::vector<bool>;

    void selectAsBefore(const RemovalChoice& earlier, std::size_t earlierGroup, std::size_t group);
    void update();
    Flags withWholeReceipts(const std::vector<Uuid>& ids) const;
    Flags selectedOfThoseThatGo() const;
    void leaveToThoseThatStay();
    bool staysWhole(std::size_t group) const;
    void takeEachItemOnce();
    bool goesAlong(std::size_t trace) const;
    void noteSharedItems(std::vector<RemovalTarget>& targets) const;
    Findings::Place takenWith(Findings::Place place) const;
    void gather();
    StayingGroup stayingOf(std::size_t group) const;
    StayingGroup::Item staying(const Trace& trace, std::size_t number) const;
    void describe();

    std::shared_ptr<const Findings> findings_;
    std::shared_ptr<StayingClaims> claims_;
    RemovalSubject::Kind kind_ = RemovalSubject::Kind::applications;
    RemovalMode mode_ = RemovalMode::uninstall;
    Flags selected_;
    Flags named_;    ///< selected individually
    Flags setAside_; ///< selected, but removed only by an uninstall: restored when switching back
    Flags leftOut_;  ///< groups
    std::optional<RemovalRefusal> refusedByDefault_; ///< until the selection changes

    std::vector<const AppTarget*>
        keptFor_; ///< by trace: the remaining application that claims a selected item
    Flags goes_;  ///< what is removed, by trace
    Flags goingPlaces_;
    std::vector<GoingGroup> going_;
    RemovalSummary summary_;
    RemovalSubject subject_;
    std::optional<RemovalRefusal> refusal_;
};

} // namespace tidwen
