#include "removal/removal_choice.h"

#include "base/path.h"
#include "base/uuid.h"
#include "operations/removal_operation.h"
#include "posix/posix_process_runner.h"
#include "removal/staying_claims.h"
#include "scan/applications/app_target.h"
#include "scan/matching/default_selection.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <variant>

namespace tidwen {

namespace {

bool isApplication(const Trace& trace) {
    return trace.category == TraceCategory::application;
}

/// How well the reason tells the owner of an item apart from others with a claim to it; the longer of two
/// identifiers or names says more.
std::pair<int, std::size_t> strength(const MatchReason& reason) {
    using enum MatchReason::Kind;
    constexpr MatchReason::Kind weakestFirst[] = {sharedAppGroup, executableName, nameToken,     receipt,
                                                  appGroup,       exactBundleID,  declaredTarget};
    const auto kind = std::ranges::find(weakestFirst, reason.kind) - std::begin(weakestFirst);
    return {static_cast<int>(kind), reason.value.size()};
}

/// Calls `visit(number, trace, group's number)` for every trace.
template<class Visit>
void forEachTrace(const Findings& findings, const Visit& visit) {
    std::size_t number = 0;
    for (std::size_t group = 0; group < findings.groups().size(); ++group)
        for (const auto& trace : findings.groups()[group].traces)
            visit(number++, trace, group);
}

} // namespace

RemovalChoice::RemovalChoice()
    : RemovalChoice(std::make_shared<const Findings>(), RemovalSubject::Kind::applications) {}

RemovalChoice::RemovalChoice(std::shared_ptr<const Findings> findings, RemovalSubject::Kind kind)
    : findings_(std::move(findings)),
      claims_(std::make_shared<StayingClaims>(findings_)),
      kind_(kind),
      selected_(findings_->traceCount()),
      named_(selected_),
      setAside_(selected_),
      leftOut_(findings_->groups().size()) {
    update();
}

bool RemovalChoice::isSelected(const Uuid& id) const {
    const auto number = findings_->number(id);
    return number && selected_[*number];
}

std::size_t RemovalChoice::selectedCount() const {
    std::size_t count = 0;
    forEachTrace(*findings_, [&](std::size_t number, const Trace& trace, std::size_t group) {
        if (selected_[number] && !findings_->resetsNothing(group, trace)) ++count;
    });
    return count;
}

std::vector<RemovalTarget> RemovalChoice::targets() const {
    std::vector<RemovalTarget> targets;
    targets.reserve(going_.size());
    for (const auto& each : going_) {
        targets.push_back({each.group->target, {}, false});
        targets.back().traces.reserve(each.traces.size());
        for (const auto* trace : each.traces)
            targets.back().traces.push_back(*trace);
    }
    noteSharedItems(targets);
    return targets;
}

/// An item comes back with each application whose claim to it is as strong as that of its recorded owner, or
/// was to something in it. A weaker claim, as of "Lumen" to what "Lumen Beta" calls its own, is none.
void RemovalChoice::noteSharedItems(std::vector<RemovalTarget>& targets) const {
    if (targets.size() < 2) return;
    std::map<Findings::Place, std::pair<RemovalTarget*, Uuid>> takers;
    for (auto& target : targets)
        for (const auto& trace : target.traces)
            if (const auto place = findings_->place(*findings_->number(trace.id)); place != Findings::noPlace)
                takers.emplace(place, std::pair(&target, trace.id));
    std::map<Findings::Place, std::pair<int, std::size_t>> strongest;
    const auto counts = [&](std::size_t number, std::size_t group) {
        return selected_[number] && !leftOut_[group] && !keptFor_[number]
               && findings_->place(number) != Findings::noPlace;
    };
    forEachTrace(*findings_, [&](std::size_t number, const Trace& trace, std::size_t group) {
        if (!counts(number, group)) return;
        auto& best = strongest.try_emplace(findings_->place(number), strength(trace.reason)).first->second;
        best = std::max(best, strength(trace.reason));
    });
    forEachTrace(*findings_, [&](std::size_t number, const Trace& claimed, std::size_t group) {
        if (!counts(number, group) || strength(claimed.reason) < strongest[findings_->place(number)]) return;
        const auto taker = takers.find(takenWith(findings_->place(number)));
        if (taker == takers.end()) return;
        auto& [target, trace] = taker->second;
        const auto& claimant = findings_->groups()[group].target.bundleID;
        if (claimant.empty() || claimant == target->target.bundleID) return;
        auto& others = target->sharedWith[trace];
        if (std::ranges::find(others, claimant) == others.end()) others.push_back(claimant);
    });
}

/// The outermost removed folder that contains the item, or the item itself.
Findings::Place RemovalChoice::takenWith(Findings::Place place) const {
    if (place == Findings::noPlace) return place;
    auto outermost = place;
    for (auto outer = findings_->outer(place); outer != Findings::noPlace; outer = findings_->outer(outer))
        if (goingPlaces_[outer]) outermost = outer;
    return outermost;
}

std::vector<Remainder> RemovalChoice::remainders() const {
    std::vector<Remainder> left;
    std::set<std::pair<std::size_t, std::string_view>> listed;
    for (const auto& each : staying()) {
        left.push_back({.target = each.group->target, .traces = {}});
        left.back().traces.reserve(each.items.size());
        for (const auto& item : each.items) {
            if (!listed.emplace(item.trace->action.index(), item.trace->displayName).second) continue;
            left.back().traces.push_back({*item.trace, item.reason});
            if (item.claimant)
                left.back().traces.back().claimant = {item.claimant->bundleID, item.claimant->name,
                                                      item.claimant->bundleURL};
        }
        if (left.back().traces.empty()) left.pop_back();
    }
    return left;
}

void RemovalChoice::setSelected(const std::vector<Uuid>& ids, bool selected) {
    if (selected) refusedByDefault_.reset();
    const auto isMeant = withWholeReceipts(ids);
    forEachTrace(*findings_, [&](std::size_t number, const Trace& trace, std::size_t) {
        if (isMeant[number]) selected_[number] = selected && isEligible(trace, mode_);
    });
    update();
}

void RemovalChoice::select(const std::vector<Uuid>& ids, const std::vector<Uuid>& named) {
    selected_.assign(selected_.size(), false);
    setAside_ = selected_;
    named_ = withWholeReceipts(named);
    setSelected(ids, true);
}

/// The traces with these ids and, of each installer receipt of which they contain one file, the other one: a
/// receipt without its list of files counts as unreadable, and every later sweep would stop at it.
RemovalChoice::Flags RemovalChoice::withWholeReceipts(const std::vector<Uuid>& ids) const {
    Flags isMeant(selected_.size());
    for (const auto number : findings_->numbers(ids))
        isMeant[number] = true;
    std::set<Path> receipts;
    const auto receiptOf = [](const Trace& trace) {
        const auto* file = trace.category == TraceCategory::receipts ? movedPath(trace.action) : nullptr;
        return file ? std::optional(file->parent() / file->stem()) : std::nullopt;
    };
    forEachTrace(*findings_, [&](std::size_t number, const Trace& trace, std::size_t) {
        if (const auto receipt = isMeant[number] ? receiptOf(trace) : std::nullopt) receipts.insert(*receipt);
    });
    if (receipts.empty()) return isMeant;
    forEachTrace(*findings_, [&](std::size_t number, const Trace& trace, std::size_t) {
        const auto receipt = receiptOf(trace);
        if (receipt && receipts.contains(*receipt)) isMeant[number] = true;
    });
    return isMeant;
}

void RemovalChoice::selectDefaults() {
    named_.assign(named_.size(), false);
    forEachTrace(*findings_, [&](std::size_t number, const Trace& trace, std::size_t group) {
        const bool staysNow = staysInMode(trace, mode_);
        // A reset moves only data, so it does not matter whether the application is removable.
        const bool goesAlone = mode_ == RemovalMode::reset && !staysNow;
        const bool isTaken =
            takenByDefault(trace) && (goesAlone || !findings_->groups()[group].isKeptByDefault);
        selected_[number] = isTaken && isEligible(trace, mode_);
        setAside_[number] = isTaken && staysNow;
    });
    refusedByDefault_ = whyNotByDefault(findings_->scanned());
    update();
}

void RemovalChoice::selectAsBefore(const RemovalChoice& earlier) {
    mode_ = earlier.mode_;
    selectDefaults();
    const auto application = [](const FoundGroup& group) {
        return std::pair(group.target.bundleURL, group.target.bundleID);
    };
    const auto& before = earlier.findings_->groups();
    for (std::size_t i = 0; i < findings_->groups().size(); ++i) {
        const auto same = std::ranges::find(before, application(findings_->groups()[i]), application);
        if (same != before.end()) selectAsBefore(earlier, static_cast<std::size_t>(same - before.begin()), i);
    }
    update();
}

void RemovalChoice::selectAsBefore(const RemovalChoice& earlier, std::size_t earlierGroup,
                                   std::size_t group) {
    const auto& traces = findings_->groups()[group].traces;
    const bool isKept = findings_->groups()[group].isKeptByDefault;
    const auto& known = earlier.findings_->groups()[earlierGroup].traces;
    std::multimap<std::string_view, std::size_t> numbers; // by what is shown, which an action determines
    for (std::size_t i = 0; i < known.size(); ++i)
        numbers.emplace(known[i].displayName, i);
    for (std::size_t i = 0; i < traces.size(); ++i) {
        const auto [begin, end] = numbers.equal_range(traces[i].displayName);
        const auto same = std::find_if(
            begin, end, [&](const auto& each) { return known[each.second].action == traces[i].action; });
        if (same == end) continue;
        const auto before = earlier.findings_->firstNumber(earlierGroup) + same->second;
        const auto now = findings_->firstNumber(group) + i;
        // What has become doubtful since was not chosen as that.
        const bool isNamed = isEligible(traces[i], mode_) && !isKept && !takenByDefault(known[same->second]);
        selected_[now] = earlier.selected_[before] && (selected_[now] || isNamed);
        setAside_[now] = earlier.setAside_[before] && (setAside_[now] || isNamed);
    }
}

void RemovalChoice::setMode(RemovalMode mode) {
    if (findings_->scanned().empty() || mode == mode_) return;
    mode_ = mode;
    forEachTrace(*findings_, [&](std::size_t number, const Trace& trace, std::size_t) {
        if (mode == RemovalMode::uninstall) {
            if (setAside_[number]) selected_[number] = true;
            setAside_[number] = false;
        } else if (selected_[number] && !isEligible(trace, mode)) {
            selected_[number] = false;
            setAside_[number] = true;
        }
    });
    update();
}

void RemovalChoice::leaveOut(const FoundGroup& group) {
    leftOut_[static_cast<std::size_t>(&group - findings_->groups().data())] = true;
    update();
}

void RemovalChoice::update() {
    goes_ = selectedOfThoseThatGo();
    leaveToThoseThatStay();
    takeEachItemOnce();
    gather();
    describe();
}

RemovalChoice::Flags RemovalChoice::selectedOfThoseThatGo() const {
    Flags goes = selected_;
    for (std::size_t group = 0; group < leftOut_.size(); ++group)
        if (leftOut_[group])
            std::fill_n(goes.begin() + static_cast<std::ptrdiff_t>(findings_->firstNumber(group)),
                        findings_->groups()[group].traces.size(), false);
    return goes;
}

/// Whether a scanned application itself stays: in an uninstall without its bundle, in a reset with nothing of
/// it selected. One without a bundle to remove (in the Trash, already gone) does not exist anywhere.
bool RemovalChoice::staysWhole(std::size_t group) const {
    if (leftOut_[group]) return true;
    const auto traces = findings_->groups()[group].traces;
    const auto first = findings_->firstNumber(group);
    const auto bundle = std::ranges::find_if(traces, isApplication);
    if (bundle == traces.end()) return false;
    if (mode_ == RemovalMode::uninstall) return !selected_[first + (bundle - traces.begin())];
    for (std::size_t i = 0; i < traces.size(); ++i)
        if (selected_[first + i]) return false;
    return true;
}

/// Applications scanned together do not contest each other, because all are to be removed. One that stays
/// keeps items to which it has an equally strong claim, also against other entries of the run. Items the user
/// named are removed whoever claims them, as in the removal of one application, except against an application
/// that is left out later.
void RemovalChoice::leaveToThoseThatStay() {
    keptFor_.assign(goes_.size(), nullptr);
    std::vector<const AppTarget*> keeps(findings_->placeCount());
    Flags keepsNamed(findings_->placeCount());
    const auto& scanned = findings_->scanned();
    bool isAnyKept = false;
    for (std::size_t group = 0; group < scanned.size(); ++group) {
        if (!staysWhole(group)) continue;
        for (const auto number : claims_->of(group)) {
            if (!goes_[number] || (named_[number] && !leftOut_[group])) continue;
            keptFor_[number] = &scanned[group].target;
            isAnyKept = true;
            if (const auto place = findings_->place(number); place != Findings::noPlace) {
                keeps[place] = keptFor_[number];
                if (leftOut_[group]) keepsNamed[place] = true;
            }
        }
    }
    if (!isAnyKept) return;
    for (std::size_t number = 0; number < goes_.size(); ++number) {
        const auto place = findings_->place(number);
        if (goes_[number] && !keptFor_[number] && place != Findings::noPlace
            && (!named_[number] || keepsNamed[place]))
            keptFor_[number] = keeps[place];
        if (keptFor_[number]) goes_[number] = false;
    }
}

/// Drops items inside a folder that is also removed, and all but one of those that several groups found: a
/// second move would fail, and undo would find the place of the first occupied. The item goes with the group
/// whose claim is strongest, whichever the user named first, so that undoing that group brings it back.
void RemovalChoice::takeEachItemOnce() {
    goingPlaces_.assign(findings_->placeCount(), false);
    for (std::size_t number = 0; number < goes_.size(); ++number)
        if (const auto place = findings_->place(number); goes_[number] && place != Findings::noPlace)
            goingPlaces_[place] = true;
    struct Taker {
        const Trace* trace = nullptr;
        std::size_t number = 0;
    };
    std::vector<Taker> takers(findings_->placeCount());
    forEachTrace(*findings_, [&](std::size_t number, const Trace& trace, std::size_t) {
        const auto place = findings_->place(number);
        if (!goes_[number] || place == Findings::noPlace) return;
        auto& taker = takers[place];
        const bool isBetter = !taker.trace || strength(taker.trace->reason) < strength(trace.reason);
        if (goesAlong(number) || !isBetter) {
            goes_[number] = false;
            return;
        }
        if (taker.trace) goes_[taker.number] = false;
        taker = {&trace, number};
    });
}

/// Whether a folder that contains it is removed.
bool RemovalChoice::goesAlong(std::size_t trace) const {
    const auto place = findings_->place(trace);
    if (place == Findings::noPlace) return false;
    for (auto outer = findings_->outer(place); outer != Findings::noPlace; outer = findings_->outer(outer))
        if (goingPlaces_[outer]) return true;
    return false;
}

void RemovalChoice::gather() {
    going_.clear();
    for (std::size_t i = 0; i < findings_->groups().size(); ++i) {
        const auto& group = findings_->groups()[i];
        GoingGroup going{.group = &group};
        for (std::size_t k = 0; k < group.traces.size(); ++k)
            if (goes_[findings_->firstNumber(i) + k]) going.traces.push_back(&group.traces[k]);
        if (!going.traces.empty()) going_.push_back(std::move(going));
    }
}

std::vector<StayingGroup> RemovalChoice::staying() const {
    std::vector<StayingGroup> staying;
    for (std::size_t group = 0; group < findings_->groups().size(); ++group)
        if (auto left = stayingOf(group); !left.items.empty()) staying.push_back(std::move(left));
    return staying;
}

StayingGroup RemovalChoice::stayingOf(std::size_t group) const {
    const auto& found = findings_->groups()[group];
    const auto first = findings_->firstNumber(group);
    StayingGroup left{.group = &found};
    bool isGoing = false;
    for (std::size_t k = 0; k < found.traces.size(); ++k)
        isGoing = isGoing || (goes_[first + k] && isApplication(found.traces[k]));
    for (std::size_t k = 0; k < found.traces.size(); ++k) {
        const auto& trace = found.traces[k];
        const auto place = findings_->place(first + k);
        const bool isTaken =
            goes_[first + k] || (place != Findings::noPlace && goingPlaces_[place]) || goesAlong(first + k);
        const bool isIdle = std::holds_alternative<action::Guidance>(trace.action) && !isGoing;
        if (!isTaken && !staysInMode(trace, mode_) && !isIdle)
            left.items.push_back(staying(trace, first + k));
    }
    return left;
}

StayingGroup::Item RemovalChoice::staying(const Trace& trace, std::size_t number) const {
    if (keptFor_[number]) return {&trace, StayReason::claimed, keptFor_[number]};
    return {&trace, selected_[number] ? StayReason::leftOut : whyNotSelected(trace)};
}

void RemovalChoice::describe() {
    std::vector<const Trace*> all, counted;
    subject_ = {.kind = kind_, .mode = mode_, .groups = going_.size()};
    for (const auto& each : going_) {
        const auto group = static_cast<std::size_t>(each.group - findings_->groups().data());
        std::ranges::copy_if(each.traces, std::back_inserter(counted),
                             [&](const Trace* trace) { return !findings_->resetsNothing(group, *trace); });
        all.insert(all.end(), each.traces.begin(), each.traces.end());
        if (subject_.name.empty()) subject_.name = each.group->target.name;
        if (std::ranges::none_of(each.traces, [](const Trace* trace) { return isApplication(*trace); }))
            subject_.goesWhole = false;
    }
    subject_.items = counted.empty() ? all.size() : counted.size();
    summary_ = summarize(counted);
    summary_.keepsPathPermissions = std::ranges::any_of(going_, [this](const GoingGroup& each) {
        return std::ranges::any_of(each.traces,
                                   [](const Trace* trace) {
                                       return std::holds_alternative<action::ResetPermissions>(trace->action);
                                   })
               && findings_->hasPathPermissions(*each.group);
    });
    refusal_.reset();
    if (refusedByDefault_ && mode_ == RemovalMode::uninstall)
        refusal_ = refusedByDefault_;
    else if (all.empty())
        refusal_ = RemovalRefusal{{"error.nothingToRemove"}};
}

} // namespace tidwen
