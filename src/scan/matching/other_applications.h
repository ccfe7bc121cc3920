#pragma once

#include "base/path.h"
#include "scan/applications/owning_bundle.h"
#include "scan/matching/identifier_index.h"
#include "scan/matching/trace.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {

/// The data needed to find an application by its name.
struct InstalledIdentity {
    Path url;
    std::string bundleID;
    std::string name;
};

/// The vendor component of an identifier in canonical form ("example" of "com.example.app"); empty when it is
/// shorter than 4 characters.
std::string vendorPiece(std::string_view identifier);

/// The bundles that stay when an application is removed, indexed by identifier and name, so that a
/// candidate's name is looked up in time independent of their number. Immutable; thread-safe.
class OtherApplications {
  public:
    /// Returns what each of the bundles contains and declares, in order. Called at most once, when an answer
    /// first depends on it: most do not, and reading it is the slowest step.
    using ReadContents = std::function<std::vector<BundleContents>()>;

    OtherApplications() = default;
    /// `others` without the target's own bundle. Another bundle with the target's identifier is a copy of it:
    /// it shares every leftover and contests none, so answers leave it out.
    OtherApplications(std::vector<OwningBundle> others, std::string_view targetBundleID,
                      ReadContents readContents = {});

    const std::vector<OwningBundle>& bundles() const { return bundles_; }

    const std::optional<Claimant>& copyOfTarget() const { return copy_; }

    /// The candidate (lower-cased) begins with the identifier of another application, or contains "."
    /// followed by one.
    bool claims(std::string_view lowercasedCandidate) const;

    /// The owner of the longest identifier that the candidate (lower-cased), from its start or after one of
    /// its dots, equals or continues with ".".
    std::optional<Claimant> longestContinued(std::string_view lowercasedCandidate) const;

    /// The same for a candidate that contains an identifier of the target's: considers only identifiers that
    /// are not a prefix of it. `own` is that part of the candidate.
    std::optional<Claimant> rivalOf(std::string_view own, std::string_view lowercasedCandidate) const;

    /// An application whose vendor component has this canonical form: a folder of that name may hold data of
    /// all applications of that vendor.
    std::optional<Claimant> ofVendor(std::string_view canonicalForm) const;

    /// The owner of the bundle that contains the path, compared as text.
    std::optional<Claimant> holding(const Path& path) const;

    /// An owner with a name of this canonical form.
    std::optional<Claimant> named(std::string_view canonicalForm) const;

    /// True when a bundle has exactly this identifier (lower-cased).
    bool hasIdentifier(std::string_view lowercased) const { return identifiers_.contains(lowercased); }

    // The following read the contents of all others, copies of the target included, on first use.

    /// The owner of a bundle that embeds a helper or a job of this identifier (lower-cased).
    std::optional<Claimant> embedding(std::string_view lowercasedIdentifier) const;
    /// As `rivalOf`, for identifiers of embedded helpers and jobs.
    std::optional<Claimant> embeddedRivalOf(std::string_view own, std::string_view lowercasedCandidate) const;
    /// The owner that declares this application group. `mayLackTeam`: a group declared with a team also
    /// matches without it; false for a name that is primarily an application's identifier.
    std::optional<Claimant> declaringGroup(std::string_view group, bool mayLackTeam = true) const;
    /// As `rivalOf`, for groups, without those that are no more than `own`.
    std::optional<Claimant> groupRivalOf(std::string_view own, std::string_view lowercasedCandidate) const;
    /// Where parts of a bundle lie outside it, behind links.
    std::vector<std::pair<Path, Claimant>> linkedPlaces() const;

  private:
    using Index =
        std::vector<std::pair<std::string, std::size_t>>; ///< sorted; the second is an index into `bundles_`
    struct Carried;

    std::optional<Claimant> claimant(const Index& index, std::string_view key) const;
    Claimant claimant(std::size_t bundle) const;
    const Carried& carried() const;

    std::vector<OwningBundle> bundles_;
    IdentifierIndex identifiers_;
    Index declared_; ///< lower-cased identifiers
    Index names_;    ///< canonical names
    Index vendors_;  ///< vendor components
    std::optional<Claimant> copy_;
    std::shared_ptr<Carried> carried_;
};

} // namespace tidwen
