#include "scan/other_applications.h"

#include "base/text.h"
#include "scan/group_name.h"

#include <algorithm>
#include <mutex>

namespace tidwen {

namespace {

// No file, label or service that is looked at has a longer name, and a hostile Info.plist may hold megabytes.
constexpr std::size_t longestIdentifier = 1024;

std::string folded(std::string_view text) {
    return lowercased(composed(text));
}

/// Calls `visit` with the text from its start and from every dot on, until it answers true.
template<class Visit>
bool anyStart(std::string_view text, Visit visit) {
    for (std::size_t start = 0;;) {
        if (visit(text.substr(start))) return true;
        const auto dot = text.find('.', start);
        if (dot == text.npos) return false;
        start = dot + 1;
    }
}

} // namespace

/// What the bundles carry, once it has been asked for.
struct OtherApplications::Carried {
    ReadContents read;
    std::once_flag once;
    std::map<std::string, std::size_t, std::less<>> embedded;       ///< lower-cased
    std::map<std::string, std::size_t, std::less<>> groups;         ///< lower-cased
    std::map<std::string, std::size_t, std::less<>> groupsSansTeam; ///< those with a team, without it

    void fill() {
        const auto contents = read();
        for (std::size_t i = 0; i < contents.size(); ++i) {
            for (const auto& identifier : contents[i].embeddedIDs)
                embedded.emplace(folded(identifier), i);
            for (const auto& job : contents[i].jobs)
                embedded.emplace(folded(job.label), i);
            for (const auto& group : contents[i].groups) {
                auto name = GroupName::of(group);
                groups.emplace(name.lowercased, i);
                groupsSansTeam.emplace(std::move(name.withoutTeam), i);
            }
        }
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
        if (identifier.empty() || identifier.size() > longestIdentifier) continue;
        if (identifier == targetIdentifier) {
            if (!copy_) copy_ = claimant(i);
            continue;
        }
        for (const auto& name : bundle.names)
            if (auto canonical = canonicalForm(name); !canonical.empty())
                names_.emplace_back(std::move(canonical), i);
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
    std::string_view longest;
    anyStart(lowercasedCandidate, [&](std::string_view rest) {
        const auto length = identifiers_.longestContinued(rest);
        if (length > longest.size()) longest = rest.substr(0, length);
        return false;
    });
    return longest.empty() ? std::nullopt : claimant(declared_, longest);
}

std::optional<Claimant> OtherApplications::ofVendor(std::string_view canonicalForm) const {
    return claimant(vendors_, canonicalForm);
}

std::optional<Claimant> OtherApplications::holding(const Path& path) const {
    const Path place = path.standardized();
    for (std::size_t i = 0; i < bundles_.size(); ++i)
        if (place.isWithinIgnoringCase(bundles_[i].url) || place.isWithinIgnoringCase(bundles_[i].place))
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
    if (!carried_) return std::nullopt;
    const auto& embedded = carried().embedded;
    const auto found = embedded.find(lowercasedIdentifier);
    return found == embedded.end() ? std::nullopt : std::optional(claimant(found->second));
}

std::optional<Claimant> OtherApplications::declaringGroup(std::string_view group) const {
    if (!carried_) return std::nullopt;
    const auto name = GroupName::of(group);
    const auto& known = carried();
    for (const auto& [groups, key] :
         {std::pair(&known.groups, &name.lowercased), std::pair(&known.groups, &name.withoutTeam),
          std::pair(&known.groupsSansTeam, &name.lowercased)})
        if (const auto found = groups->find(*key); found != groups->end()) return claimant(found->second);
    return std::nullopt;
}

} // namespace tidwen
