#pragma once

#include "base/path.h"
#include "scan/identifier_index.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {

/// What attribution needs to know of an installed application.
struct InstalledIdentity {
    Path url;
    std::string bundleID;
    std::string name;
};

/// The vendor piece of an identifier in canonical form ("example" of "com.example.app"); empty when it is
/// shorter than 4 characters.
std::string vendorPiece(std::string_view identifier);

/// The applications that stay: an index over their identifiers and names that answers, for one candidate
/// name, in time that does not grow with their number. Immutable.
class OtherApplications {
  public:
    OtherApplications() = default;
    /// `installed` without the bundle at `target`. Another bundle with the target's own identifier is a copy
    /// of it: it shares every leftover, so it takes none away from the target, and the answers leave it out.
    OtherApplications(const std::vector<InstalledIdentity>& installed, const Path& target,
                      std::string_view targetBundleID);

    bool hasCopyOfTarget() const { return hasCopy_; }

    /// The candidate (lower-cased) begins with the identifier of another application, or contains "."
    /// followed by one.
    bool claims(std::string_view lowercasedCandidate) const;

    /// The longest identifier that the candidate (lower-cased), from its start or from one of its dots on,
    /// equals or continues with "."; as the application declares it. Nothing when there is none.
    std::optional<std::string> longestContinued(std::string_view lowercasedCandidate) const;

    /// The identifier of an application whose maker's piece of the identifier equals this canonical form: a
    /// folder of that name may hold what all applications of that maker keep.
    std::optional<std::string> ofVendor(std::string_view canonicalForm) const;

    /// The identifier of the application in whose bundle the path lies.
    std::optional<std::string> holding(const Path& path) const;

    /// The identifier of an application whose name's canonical form equals this one.
    std::optional<std::string> named(std::string_view canonicalForm) const;

    /// True when an application has exactly this identifier (lower-cased).
    bool hasIdentifier(std::string_view lowercased) const { return identifiers_.contains(lowercased); }

  private:
    using Declared =
        std::vector<std::pair<std::string, std::string>>; ///< sorted; the second is what is shown

    IdentifierIndex identifiers_;
    Declared declared_;                                ///< lower-cased identifier → as declared
    Declared names_;                                   ///< canonical name → identifier as declared
    Declared vendors_;                                 ///< vendor piece → identifier as declared
    std::vector<std::pair<Path, std::string>> places_; ///< bundle → identifier as declared
    bool hasCopy_ = false;
};

} // namespace tidwen
