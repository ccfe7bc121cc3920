#include "removal/staying_claims.h"

#include "base/path.h"
#include "scan/applications/app_target.h"
#include "scan/applications/owning_bundle.h"
#include "scan/matching/other_applications.h"
#include "scan/matching/residue_matcher.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <string>
#include <variant>

namespace tidwen {

namespace {

/// A matcher for an application's items as if only the other one stayed.
ResidueMatcher judging(const ScanResult& application, const ScanResult& staying) {
    const auto& other = staying.target;
    OwningBundle bundle{.url = other.bundleURL.standardized(),
                        .place = other.bundleURL.standardized(),
                        .bundleID = other.bundleID,
                        .name = other.name,
                        .names = {other.name, other.bundleURL.stem()},
                        .isApplication = true,
                        .isReadable = true};
    if (other.executableName) bundle.names.push_back(*other.executableName);
    BundleContents contents{.embeddedIDs = staying.helperBundleIDs,
                            .jobs = other.embeddedLaunchdItems,
                            .groups = other.appGroups,
                            .isComplete = true};
    return {application.target,
            OtherApplications({std::move(bundle)}, application.target.bundleID,
                              [contents = std::move(contents)] { return std::vector{contents}; }),
            application.helperBundleIDs};
}

/// The name used for attribution: of a file, label or service.
std::string attributedName(const Trace& trace) {
    if (const auto* job = std::get_if<action::BootoutAndMove>(&trace.action)) return job->label;
    if (const auto* job = std::get_if<action::Bootout>(&trace.action)) return job->label;
    if (const auto* item = std::get_if<action::DeleteKeychainItem>(&trace.action)) return item->service;
    const Path* moved = movedPath(trace.action);
    return moved ? moved->lastComponent() : std::string();
}

bool isContested(const Trace& trace, const ResidueMatcher& matcher) {
    if (trace.reason.kind == MatchReason::Kind::appGroup)
        return matcher.others().declaringGroup(trace.reason.value).has_value();
    return matcher.contestedBy(attributedName(trace), trace.reason).has_value();
}

/// Whether removing one removes something of the other.
bool meet(const Trace& a, const Trace& b) {
    const Path *first = movedPath(a.action), *second = movedPath(b.action);
    if (!first || !second) return a.action == b.action;
    return first->isWithin(*second) || second->isWithin(*first);
}

/// Finds what a remaining application claims of another one's items.
class Claims {
  public:
    Claims(const ScanResult& staying, const ScanResult& leaving)
        : staying_(staying),
          againstLeaving_(judging(leaving, staying)),
          againstStaying_(judging(staying, leaving)) {}

    bool hold(const Trace& trace) const {
        if (trace.category == TraceCategory::application) return false;
        if (isContested(trace, againstLeaving_)) return true;
        return std::ranges::any_of(staying_.traces, [&](const Trace& own) {
            return own.category != TraceCategory::application && !own.contestedBy
                   && own.reversibility != Reversibility::manualOnly && meet(trace, own)
                   && !isContested(own, againstStaying_);
        });
    }

  private:
    const ScanResult& staying_;
    ResidueMatcher againstLeaving_, againstStaying_;
};

} // namespace

const std::vector<std::size_t>& StayingClaims::of(std::size_t application) {
    const auto [known, isNew] = byApplication_.try_emplace(application);
    if (!isNew) return known->second;
    const auto& scanned = findings_->scanned();
    for (std::size_t other = 0; other < scanned.size(); ++other) {
        if (scanned[other].target.bundleURL == scanned[application].target.bundleURL) continue;
        const Claims claims(scanned[application], scanned[other]);
        const auto& traces = scanned[other].traces;
        for (std::size_t i = 0; i < traces.size(); ++i)
            if (claims.hold(traces[i])) known->second.push_back(findings_->firstNumber(other) + i);
    }
    return known->second;
}

} // namespace tidwen
