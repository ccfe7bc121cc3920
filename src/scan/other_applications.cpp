#include "scan/other_applications.h"

#include "base/text.h"

#include <algorithm>

namespace tidwen {

namespace {

// No file, label or service that is looked at has a longer name, and a hostile Info.plist may hold megabytes.
constexpr std::size_t longestIdentifier = 1024;

/// The value of the first entry with this key.
std::optional<std::string> find(const std::vector<std::pair<std::string, std::string>>& sorted,
                                std::string_view key) {
    const auto found =
        std::lower_bound(sorted.begin(), sorted.end(), key,
                         [](const auto& entry, std::string_view wanted) { return entry.first < wanted; });
    if (found == sorted.end() || found->first != key) return std::nullopt;
    return found->second;
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

std::string vendorPiece(std::string_view identifier) {
    constexpr std::size_t shortest = 4;
    const auto first = identifier.find('.');
    if (first == identifier.npos) return {};
    auto piece = canonicalForm(identifier.substr(first + 1, identifier.find('.', first + 1) - first - 1));
    return characterCount(piece) < shortest ? std::string() : piece;
}

OtherApplications::OtherApplications(const std::vector<InstalledIdentity>& installed, const Path& target,
                                     std::string_view targetBundleID) {
    const auto targetPlace = target.standardized();
    const auto targetIdentifier = lowercased(composed(targetBundleID));
    std::vector<std::string> identifiers;
    for (const auto& app : installed) {
        auto identifier = lowercased(composed(app.bundleID));
        if (identifier.empty() || identifier.size() > longestIdentifier) continue;
        if (app.url.standardized() == targetPlace) continue;
        if (identifier == targetIdentifier) {
            hasCopy_ = true;
            continue;
        }
        if (auto canonical = canonicalForm(app.name); !canonical.empty())
            names_.emplace_back(std::move(canonical), app.bundleID);
        if (auto vendor = vendorPiece(identifier); !vendor.empty())
            vendors_.emplace_back(std::move(vendor), app.bundleID);
        places_.emplace_back(app.url.standardized(), app.bundleID);
        declared_.emplace_back(identifier, app.bundleID);
        identifiers.push_back(std::move(identifier));
    }
    identifiers_ = IdentifierIndex(std::move(identifiers));
    std::sort(declared_.begin(), declared_.end());
    std::sort(names_.begin(), names_.end());
    std::sort(vendors_.begin(), vendors_.end());
}

bool OtherApplications::claims(std::string_view lowercasedCandidate) const {
    return anyStart(lowercasedCandidate, [&](std::string_view rest) { return identifiers_.startsAny(rest); });
}

std::optional<std::string> OtherApplications::longestContinued(std::string_view lowercasedCandidate) const {
    std::string_view longest;
    anyStart(lowercasedCandidate, [&](std::string_view rest) {
        const auto length = identifiers_.longestContinued(rest);
        if (length > longest.size()) longest = rest.substr(0, length);
        return false;
    });
    return longest.empty() ? std::nullopt : find(declared_, longest);
}

std::optional<std::string> OtherApplications::ofVendor(std::string_view canonicalForm) const {
    return find(vendors_, canonicalForm);
}

std::optional<std::string> OtherApplications::holding(const Path& path) const {
    const auto place = path.standardized();
    for (const auto& [bundle, identifier] : places_)
        if (place.isWithinIgnoringCase(bundle)) return identifier;
    return std::nullopt;
}

std::optional<std::string> OtherApplications::named(std::string_view canonicalForm) const {
    return find(names_, canonicalForm);
}

} // namespace tidwen
