#include "removal/findings.h"

#include "base/path.h"
#include "base/uuid.h"
#include "scan/applications/app_target.h"
#include "scan/matching/default_selection.h"
#include "scan/matching/trace.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace tidwen {

namespace {

std::string_view folderOf(std::string_view path) {
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

} // namespace

std::vector<FoundGroup> groupsOf(const std::vector<ScanResult>& scanned) {
    std::vector<FoundGroup> groups;
    groups.reserve(scanned.size());
    for (const auto& result : scanned)
        groups.push_back({result.target, result.traces, result.immovable || result.isProtected});
    return groups;
}

Findings::Findings(Scanned scanned, const UserEnvironment& user)
    : owner_(scanned),
      scanned_(std::move(scanned)),
      groups_(groupsOf(*scanned_)),
      unseen_(unseenIn(*scanned_, user)) {
    std::set<Path> names; // several applications may claim the same item
    for (const auto& result : *scanned_)
        names.insert(result.skippedNames.begin(), result.skippedNames.end());
    skippedNames_.assign(names.begin(), names.end());
    index();
}

Findings::Findings(const Swept& swept)
    : owner_(swept),
      unseen_({.unreadableLocations = swept->unreadableLocations, .leftOut = swept->leftOut}),
      skippedNames_(swept->skippedNames) {
    std::ranges::sort(skippedNames_);
    skippedNames_.erase(std::ranges::unique(skippedNames_).begin(), skippedNames_.end());
    for (const auto& group : swept->groups) {
        AppTarget gone;
        gone.bundleID = group.bundleID;
        gone.name = group.name;
        groups_.push_back({.target = std::move(gone), .traces = group.traces});
    }
    index();
}

Findings::Findings(const std::string& name, std::vector<Trace> offered) {
    const auto traces = std::make_shared<const std::vector<Trace>>(std::move(offered));
    owner_ = traces;
    AppTarget target;
    target.name = name;
    groups_.push_back({std::move(target), *traces});
    index();
}

const std::vector<ScanResult>& Findings::scanned() const {
    static const std::vector<ScanResult> none;
    return scanned_ ? *scanned_ : none;
}

bool Findings::resetsNothing(std::size_t group, const Trace& trace) const {
    return group < scanned().size() && tidwen::resetsNothing(trace, scanned()[group]);
}

bool Findings::hasPathPermissions(const FoundGroup& group) const {
    const auto number = static_cast<std::size_t>(&group - groups_.data());
    const auto isByPath = [](const PermissionGrant& grant) {
        return grant.isPathClient || grant.isAlsoByPath;
    };
    return number < scanned().size() && std::ranges::any_of(scanned()[number].permissions.grants, isByPath);
}

void Findings::index() {
    std::size_t number = 0;
    for (const auto& group : groups_) {
        firstNumbers_.push_back(number);
        for (const auto& trace : group.traces) {
            ids_.push_back(trace.id);
            numbers_.emplace_back(trace.id, number++);
        }
    }
    std::ranges::sort(numbers_);
    numberPlaces();
}

void Findings::numberPlaces() {
    std::unordered_map<std::string_view, Place> known;
    places_.reserve(numbers_.size());
    for (const auto& group : groups_)
        for (const auto& trace : group.traces) {
            const Path* moved = movedPath(trace.action);
            places_.push_back(
                moved ? known.try_emplace(moved->string(), static_cast<Place>(known.size())).first->second
                      : noPlace);
        }
    outer_.assign(known.size(), noPlace);
    for (const auto& [path, place] : known)
        for (auto folder = folderOf(path); !folder.empty(); folder = folderOf(folder))
            if (const auto holder = known.find(folder); holder != known.end()) {
                outer_[place] = holder->second;
                break;
            }
}

std::optional<std::size_t> Findings::number(const Uuid& id) const {
    const auto found = std::ranges::lower_bound(numbers_, id, {}, &std::pair<Uuid, std::size_t>::first);
    return found != numbers_.end() && found->first == id ? std::optional(found->second) : std::nullopt;
}

std::vector<std::size_t> Findings::numbers(const std::vector<Uuid>& ids) const {
    std::vector<std::size_t> found;
    found.reserve(ids.size());
    for (const auto& id : ids) {
        const auto next = found.empty() ? 0 : found.back() + 1;
        if (next < ids_.size() && ids_[next] == id)
            found.push_back(next);
        else if (const auto known = number(id))
            found.push_back(*known);
    }
    return found;
}

} // namespace tidwen
