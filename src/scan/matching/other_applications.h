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

/// What finding an application by its name needs to know of it.
struct InstalledIdentity {
    Path url;
    std::string bundleID;
    std::string name;
};

/// The vendor piece of an identifier in canonical form ("example" of "com.example.app"); empty when it is
/// shorter than 4 characters.
std::string vendorPiece(std::string_view identifier);

/// The bundles that stay when an application is removed: an index over their identifiers and names that
/// answers, for one candidate name, in time that does not grow with their number. Immutable; may be used from
/// any thread.
class OtherApplications {
  public:
    /// What each of the bundles carries and declares, in their order. Called at most once, when an answer
    /// first depends on it: most do not, and reading it takes longer than everything else.
    using ReadContents = std::function<std::vector<BundleContents>()>;

    OtherApplications() = default;
    /// `others` without the target's own bundle. Another one with the target's identifier is a copy of it: it
    /// shares every leftover, so it takes none away from the target, and the answers leave it out.
    OtherApplications(std::vector<OwningBundle> others, std::string_view targetBundleID,
                      ReadContents readContents = {});

    const std::vector<OwningBundle>& bundles() const { return bundles_; }

    const std::optional<Claimant>& copyOfTarget() const { return copy_; }

    /// The candidate (lower-cased) begins with the identifier of another application, or contains "."
    /// followed by one.
    bool claims(std::string_view lowercasedCandidate) const;

    /// Whose identifier is the longest that the candidate (lower-cased), from its start or from one of its
    /// dots on, equals or continues with ".".
    std::optional<Claimant> longestContinued(std::string_view lowercasedCandidate) const;

    /// The same where the candidate holds an identifier of the target's: of those identifiers alone that are
    /// no mere beginning of it. `own` is that part of the candidate.
    std::optional<Claimant> rivalOf(std::string_view own, std::string_view lowercasedCandidate) const;

    /// An application whose maker's piece of the identifier equals this canonical form: a folder of that name
    /// may hold what all applications of that maker keep.
    std::optional<Claimant> ofVendor(std::string_view canonicalForm) const;

    /// In whose bundle the path lies, by text.
    std::optional<Claimant> holding(const Path& path) const;

    /// One of whose names has this canonical form.
    std::optional<Claimant> named(std::string_view canonicalForm) const;

    /// True when a bundle has exactly this identifier (lower-cased).
    bool hasIdentifier(std::string_view lowercased) const { return identifiers_.contains(lowercased); }

    // These read the contents of all others, copies of the target included, when they are first asked.

    /// Whose bundle embeds a helper or a job of this identifier (lower-cased).
    std::optional<Claimant> embedding(std::string_view lowercasedIdentifier) const;
    /// As `rivalOf`, by the identifiers of embedded helpers and jobs.
    std::optional<Claimant> embeddedRivalOf(std::string_view own, std::string_view lowercasedCandidate) const;
    /// Who declares this application group. `mayLackTeam`: one that is declared with a team counts without
    /// it, too; not so for a name that is first of all an application's identifier.
    std::optional<Claimant> declaringGroup(std::string_view group, bool mayLackTeam = true) const;
    /// As `rivalOf`, by the groups that are declared, without those that are no more than `own`.
    std::optional<Claimant> groupRivalOf(std::string_view own, std::string_view lowercasedCandidate) const;

  private:
    using Index =
        std::vector<std::pair<std::string, std::size_t>>; ///< sorted; the second is one of `bundles_`
    struct Carried;

    std::optional<Claimant> claimant(const Index& index, std::string_view key) const;
    Claimant claimant(std::size_t bundle) const;
    const Carried& carried() const;

    std::vector<OwningBundle> bundles_;
    IdentifierIndex identifiers_;
    Index declared_; ///< lower-cased identifiers
    Index names_;    ///< canonical names
    Index vendors_;  ///< vendor pieces
    std::optional<Claimant> copy_;
    std::shared_ptr<Carried> carried_;
};

} // namespace tidwen
