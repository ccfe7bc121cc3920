#include "removal/removal_plan.h"

#include "base/path.h"
#include "base/uuid.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <fmt/core.h>
#include <variant>

namespace tidwen {

namespace {

bool isPlanned(const Trace& trace, RemovalMode mode) {
    return !std::holds_alternative<action::Guidance>(trace.action) && !staysInMode(trace, mode);
}

bool isPreference(const Path& path) {
    const auto components = path.standardized().components();
    return std::find(components.begin(), components.end(), "Preferences") != components.end();
}

/// Plans one application after another with consecutive numbers.
class PlanBuilder {
  public:
    PlanBuilder(const QuarantineLayout& layout, RemovalMode mode) : layout_(layout), mode_(mode) {}

    void add(const RemovalTarget& target) {
        whole_ = &target;
        target_ = &target.target;
        std::vector<const Trace*> traces;
        for (const auto& trace : target.traces)
            if (isPlanned(trace, mode_)) traces.push_back(&trace);
        addPermissionResets(traces);
        addBootouts(traces);
        addKeychainDeletions(traces);
        const auto moved = inMoveOrder(traces);
        for (const auto* trace : moved)
            addMove(*trace);
        addPreferenceFlushes(moved);
    }

    std::vector<RemovalOperation> take() { return std::move(plan_); }

  private:
    using Traces = std::vector<const Trace*>;

    void append(RemovalOperation::Kind kind, bool requiresRoot, Reversibility reversibility,
                std::string displayName, Uuid traceID) {
        plan_.push_back({.id = nextID(),
                         .kind = std::move(kind),
                         .requiresRoot = requiresRoot,
                         .reversibility = reversibility,
                         .displayName = std::move(displayName),
                         .traceID = traceID,
                         .bundleID = target_->bundleID});
        if (const auto refusal = whole_->refusals.find(traceID); refusal != whole_->refusals.end())
            plan_.back().refusal = refusal->second;
    }

    bool isRefused(const Trace& trace) const { return whole_->refusals.contains(trace.id); }

    int nextID() const { return static_cast<int>(plan_.size()) + 1; }

    void addPermissionResets(const Traces& traces) {
        for (const auto* trace : traces)
            if (const auto* reset = std::get_if<action::ResetPermissions>(&trace->action))
                append(operation::ResetPermissions{reset->bundleID}, false, trace->reversibility,
                       trace->displayName, trace->id);
    }

    void addBootouts(const Traces& traces) {
        const auto add = [&](const std::string& label, bool isSystemDomain, const Uuid& traceID) {
            append(operation::Bootout{label, isSystemDomain}, isSystemDomain, Reversibility::reversible,
                   label, traceID);
        };
        for (const auto* trace : traces) {
            if (const auto* job = std::get_if<action::Bootout>(&trace->action))
                add(job->label, job->isSystemDomain, trace->id);
            else if (const auto* file = std::get_if<action::BootoutAndMove>(&trace->action))
                add(file->label, file->isSystemDomain, trace->id);
        }
    }

    void addKeychainDeletions(const Traces& traces) {
        for (const auto* trace : traces)
            if (const auto* item = std::get_if<action::DeleteKeychainItem>(&trace->action))
                append(operation::DeleteKeychainItem{item->service, item->isSystemKeychain},
                       item->isSystemKeychain, Reversibility::irreversibleDestructive, item->service,
                       trace->id);
    }

    bool isBundle(const Trace& trace) const {
        return movedPath(trace.action)->standardized() == target_->bundleURL.standardized();
    }

    Traces inMoveOrder(const Traces& traces) const {
        Traces moved;
        for (const auto* trace : traces)
            if (movedPath(trace->action)) moved.push_back(trace);
        std::stable_sort(moved.begin(), moved.end(), [&](const Trace* a, const Trace* b) {
            const bool aIsBundle = isBundle(*a);
            const bool bIsBundle = isBundle(*b);
            if (aIsBundle != bIsBundle) return bIsBundle;
            return *movedPath(a->action) < *movedPath(b->action);
        });
        return moved;
    }

    void addMove(const Trace& trace) {
        if (mode_ == RemovalMode::uninstall && isBundle(trace) && !isRefused(trace))
            append(operation::UnregisterApp{target_->bundleURL}, false, Reversibility::irreversibleHarmless,
                   target_->bundleURL.string(), Uuid::random());
        const Path& source = *movedPath(trace.action);
        append(operation::Move{source, destination(source), trace.found}, trace.requiresRoot,
               Reversibility::reversible, source.string(), trace.id);
        if (const auto others = whole_->sharedWith.find(trace.id); others != whole_->sharedWith.end())
            plan_.back().sharedWith = others->second;
    }

    /// Each item is alone in a numbered folder, so equal names never collide.
    Path destination(const Path& source) const {
        const Path folder = layout_.isBatch ? layout_.root / safeLabel(target_->name) : layout_.root;
        return folder / fmt::format("{:04}", nextID()) / source.lastComponent();
    }

    /// At most one per scope: a flush clears the daemon's entire cache.
    void addPreferenceFlushes(const Traces& moved) {
        for (const bool asRoot : {false, true}) {
            const bool needed = std::any_of(moved.begin(), moved.end(), [&](const Trace* trace) {
                return trace->requiresRoot == asRoot && !isRefused(*trace)
                       && isPreference(*movedPath(trace->action));
            });
            if (needed)
                append(operation::FlushPreferences{}, asRoot, Reversibility::irreversibleHarmless, "",
                       Uuid::random());
        }
    }

    const QuarantineLayout& layout_;
    RemovalMode mode_;
    const RemovalTarget* whole_ = nullptr;
    const AppTarget* target_ = nullptr;
    std::vector<RemovalOperation> plan_;
};

} // namespace

bool staysInMode(const Trace& trace, RemovalMode mode) {
    return mode == RemovalMode::reset
           && (trace.category == TraceCategory::application || trace.category == TraceCategory::receipts);
}

std::vector<RemovalOperation> buildRemovalPlan(const std::vector<RemovalTarget>& targets,
                                               const QuarantineLayout& layout, RemovalMode mode) {
    PlanBuilder builder(layout, mode);
    for (const auto& target : targets)
        builder.add(target);
    return builder.take();
}

} // namespace tidwen
