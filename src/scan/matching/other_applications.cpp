#include "scan/matching/other_applications.h"

#include "base/text.h"
#include "scan/applications/group_name.h"

#include <algorithm>
#include <mutex>

namespace tidwen {

namespace {

// No file, label or service in a scan has a longer name, and a hostile Info.plist may contain megabytes.
constexpr std::size_t longestIdentifier = 1024;

/// Calls `visit` with the text from its start and from each dot, until it returns true.
template<class Visit>
bool anyStart(std::string_view text, Visit visit) {
    for (std::size_t start = 0;;) {
        if (visit(text.substr(start))) return true;
        const auto dot = text.find('.', start);
        if (dot == text.npos) return false;
        start = dot + 1;
    }
}

/// The longest of the identifiers contained in the text as consecutive whole components; empty when there is
/// none. One that lies within `own`, a part of the text, and ends earlier is weaker evidence than `own`, and
/// a single word counts for nothing beside it; one that begins before `own` or extends as far is equal
/// evidence.
std::string_view longestHeld(const IdentifierIndex& identifiers, std::string_view text,
                             std::string_view own) {
    std::string_view longest;
    anyStart(text, [&](std::string_view rest) {
        const auto found = rest.substr(0, identifiers.longestContinued(rest));
        const auto saysLess = [&] {
            const bool isBeginning =
                found.data() >= own.data() && found.data() + found.size() < own.data() + own.size();
            return isBeginning || found.find('.') == found.npos;
        };
        if (found.size() > longest.size() && (own.empty() || !saysLess())) longest = found;
        return false;
    });
    return longest;
}

} // namespace

/// What the bundles contain, read on first use.
struct OtherApplications::Carried {
    ReadContents read;
    std::once_flag once;
    std::map<std::string, std::size_t, std::less<>> embedded;       ///< lower-cased
    std::map<std::string, std::size_t, std::less<>> groups;         ///< lower-cased
    std::map<std::string, std::size_t, std::less<>> groupsSansTeam; ///< those with a team, without its prefix
    IdentifierIndex embeddedIDs;                                    ///< the keys of `embedded`
    IdentifierIndex groupNames;                                     ///< those of `groups`
    std::vector<std::pair<Path, std::size_t>> linkedPlaces;

    void fill() {
        const auto contents = read();
        for (std::size_t i = 0; i < contents.size(); ++i) {
            for (const auto& identifier : contents[i].embeddedIDs)
                embedded.emplace(folded(identifier), i);
            for (const auto& place : contents[i].linkedPlaces)
                linkedPlaces.emplace_back(place, i);
            for (const auto& job : contents[i].jobs)
                embedded.emplace(folded(job.label), i);
            for (const auto& group : contents[i].groups) {
                auto name = GroupName::of(group);
                groups.emplace(name.lowercased, i);
                groupsSansTeam.emplace(std::move(name.withoutTeam), i);
            }
        }
        std::vector<std::string> identifiers;
        for (const auto& [identifier, bundle] : embedded)
            if (identifier.size() <= longestIdentifier) identifiers.push_back(identifier);
        embeddedIDs = IdentifierIndex(std::move(identifiers));
        std::vector<std::string> names;
        for (const auto& [group, bundle] : groups)
            if (group.size() <= longestIdentifier) names.push_back(group);
        groupNames = IdentifierIndex(std::move(names));
    }
};

std::string vendorPiece(std::string_view identifier) {
    constexpr std::size_t shortest = 4;
    const auto first = identifier.find('.');
    if (first == identifier.npos) return {};
    auto piece = canonicalForm(identifier.substr(first + 1, identifier.find('.', first + 1) - first - 1));
    return characterCount(piece) < shortest ? std::string() : piece;
}

OtherApplications::OtherApplications(std::vector<OwningBundle> others, std::string_view targetBundleID,
                                     ReadContents readContents)
    : bundles_(std::move(others)) {
    const auto targetIdentifier = folded(targetBundleID);
    std::vector<std::string> identifiers;
    for (std::size_t i = 0; i < bundles_.size(); ++i) {
        const auto& bundle = bundles_[i];
        auto identifier = folded(bundle.bundleID);
        if (!identifier.empty() && identifier == targetIdentifier) {
            if (!copy_) copy_ = claimant(i);
            continue;
        }
        // A bundle without an identifier still stores its data under a name.
        for (const auto& name : bundle.names)
            if (auto canonical = canonicalForm(name); !canonical.empty())
                names_.emplace_back(std::move(canonical), i);
        if (identifier.empty() || identifier.size() > longestIdentifier) continue;
        if (auto vendor = vendorPiece(identifier); !vendor.empty())
            vendors_.emplace_back(std::move(vendor), i);
        declared_.emplace_back(identifier, i);
        identifiers.push_back(std::move(identifier));
    }
    identifiers_ = IdentifierIndex(std::move(identifiers));
    for (auto* index : {&declared_, &names_, &vendors_})
        std::sort(index->begin(), index->end());
    if (readContents) {
        carried_ = std::make_shared<Carried>();
        carried_->read = std::move(readContents);
    }
}

Claimant OtherApplications::claimant(std::size_t bundle) const {
    const auto& found = bundles_[bundle];
    return {.bundleID = found.bundleID, .name = found.name, .place = found.place};
}

std::optional<Claimant> OtherApplications::claimant(const Index& index, std::string_view key) const {
    const auto found =
        std::lower_bound(index.begin(), index.end(), key,
                         [](const auto& entry, std::string_view wanted) { return entry.first < wanted; });
    if (found == index.end() || found->first != key) return std::nullopt;
    return claimant(found->second);
}

bool OtherApplications::claims(std::string_view lowercasedCandidate) const {
    return anyStart(lowercasedCandidate, [&](std::string_view rest) { return identifiers_.startsAny(rest); });
}

std::optional<Claimant> OtherApplications::longestContinued(std::string_view lowercasedCandidate) const {
    return rivalOf({}, lowercasedCandidate);
}

std::optional<Claimant> OtherApplications::rivalOf(std::string_view own,
                                                   std::string_view lowercasedCandidate) const {
    const auto longest = longestHeld(identifiers_, lowercasedCandidate, own);
    return longest.empty() ? std::nullopt : claimant(declared_, longest);
}

std::optional<Claimant> OtherApplications::ofVendor(std::string_view canonicalForm) const {
    return claimant(vendors_, canonicalForm);
}

std::optional<Claimant> OtherApplications::holding(const Path& path) const {
    const Path place = path.standardized();
    for (std::size_t i = 0; i < bundles_.size(); ++i)
        if (place.isWithinIgnoringCase(bundles_[i].url) || place.isWithinIgnoringCase(bundles_[i].place)
            || std::ranges::any_of(bundles_[i].foundAs,
                                   [&](const Path& name) { return place.isWithinIgnoringCase(name); }))
            return claimant(i);
    return std::nullopt;
}

std::optional<Claimant> OtherApplications::named(std::string_view canonicalForm) const {
    return claimant(names_, canonicalForm);
}

const OtherApplications::Carried& OtherApplications::carried() const {
    std::call_once(carried_->once, [&] { carried_->fill(); });
    return *carried_;
}

std::optional<Claimant> OtherApplications::embedding(std::string_view lowercasedIdentifier) const {
    if (!carried_ || lowercasedIdentifier.empty()) return std::nullopt;
    const auto& embedded = carried().embedded;
    const auto found = embedded.find(lowercasedIdentifier);
    return found == embedded.end() ? std::nullopt : std::optional(claimant(found->second));
}

std::optional<Claimant> OtherApplications::embeddedRivalOf(std::string_view own,
                                                           std::string_view lowercasedCandidate) const {
    return carried_ ? embedding(longestHeld(carried().embeddedIDs, lowercasedCandidate, own)) : std::nullopt;
}

std::optional<Claimant> OtherApplications::declaringGroup(std::string_view group, bool mayLackTeam) const {
    if (!carried_) return std::nullopt;
    const auto name = GroupName::of(group);
    const auto& known = carried();
    const auto lookUp = [&](const auto& groups, const std::string& key) {
        const auto found = groups.find(key);
        return found == groups.end() ? std::nullopt : std::optional(claimant(found->second));
    };
    auto declarer = lookUp(known.groups, name.lowercased);
    if (!declarer) declarer = lookUp(known.groups, name.withoutTeam);
    if (!declarer && mayLackTeam) declarer = lookUp(known.groupsSansTeam, name.lowercased);
    return declarer;
}

std::vector<std::pair<Path, Claimant>> OtherApplications::linkedPlaces() const {
    std::vector<std::pair<Path, Claimant>> places;
    if (carried_)
        for (const auto& [place, bundle] : carried().linkedPlaces)
            places.emplace_back(place, claimant(bundle));
    return places;
}

std::optional<Claimant> OtherApplications::groupRivalOf(std::string_view own,
                                                        std::string_view lowercasedCandidate) const {
    if (!carried_) return std::nullopt;
    const auto& known = carried();
    const auto held = longestHeld(known.groupNames, lowercasedCandidate, own);
    const auto found = known.groups.find(held);
    return held == own || found == known.groups.end() ? std::nullopt : std::optional(claimant(found->second));
}

} // namespace tidwen
