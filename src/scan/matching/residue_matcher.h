#pragma once

#include "scan/applications/app_target.h"
#include "scan/applications/group_name.h"
#include "scan/matching/identifier_index.h"
#include "scan/matching/other_applications.h"
#include "scan/matching/trace.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {

/// Why a candidate is the target's, and who else has as good a claim to it.
struct Attribution {
    MatchReason reason;
    std::optional<Claimant> contestedBy = {}; ///< as in `Trace`
};

/// Decides whether a name found somewhere belongs to one application, and why. Conservative: identifiers
/// first, names only when long and distinctive, and never what is Apple's, this program's or another
/// installed application's. A pure value; may be used from any thread.
class ResidueMatcher {
  public:
    /// `helperBundleIDs` count as the target's own; those that are no identifiers, or another installed
    /// application's own, are dropped here.
    ///
    /// `groupsOfLeaving`: the application groups that applications declare which go in the same run. A group
    /// among them is shared, though nobody contests it.
    ResidueMatcher(AppTarget target, OtherApplications others,
                   const std::vector<std::string>& helperBundleIDs,
                   const std::vector<std::string>& groupsOfLeaving = {});

    /// The identifier rules, and as their last step the rule on the target's name.
    std::optional<MatchReason> matchIdentifier(std::string_view candidate) const;
    std::optional<MatchReason> matchExecutable(std::string_view candidate) const;
    /// Groups compare with and without a leading team prefix ("ABCDE12345.").
    std::optional<MatchReason> matchAppGroup(std::string_view candidate) const;

    /// Another bundle that claims the candidate at least as strongly as the target does by `reason`: by its
    /// identifier or name, a helper that it embeds, or the group that it declares.
    std::optional<Claimant> contestedBy(std::string_view candidate, const MatchReason& reason) const;

    // The same with who contests it.
    std::optional<Attribution> attributeIdentifier(std::string_view candidate) const;
    /// By identifier, else by executable.
    std::optional<Attribution> attribute(std::string_view candidate) const;
    /// For the name of a group's folder: by application group, else as above.
    std::optional<Attribution> attributeGroup(std::string_view candidate) const;

    /// Whom else a name points to, of an item that was found by other means than this name.
    std::optional<Claimant> otherOwnerOf(std::string_view candidate) const;

    /// Whether the file name of a bundle is the target's. The extension of a bundle is no part of an
    /// identifier: "Acme.Input.app" is the input method of Acme, not the data of whoever calls himself so.
    bool mayClaimBundle(std::string_view fileName) const;

    /// A bundle of this identifier is the target's: it is the target's identifier, continues it, or is that
    /// of a helper in the target's bundle.
    bool isOwnIdentifier(std::string_view bundleID) const;

    /// Apple's or this program's own: never the target's, whatever else speaks for it.
    bool isOffLimits(std::string_view candidate) const;

    /// The target's name is too short or too common to find anything by, or has the form of an identifier,
    /// which it may not claim.
    bool nameMatchingDisabled() const { return canonicalName_.empty(); }
    /// What the target calls its identifier is none, or somebody's whose items are never its own.
    bool identifierMatchingDisabled() const { return identifier_.empty() || isGuarded(identifier_); }

    /// The vendor piece of the target's identifier in canonical form ("example" of "com.example.app"); empty
    /// when it is shorter than 4 characters.
    const std::string& vendor() const { return vendor_; }

    const AppTarget& target() const { return target_; }
    const OtherApplications& others() const { return others_; }

  private:
    std::optional<Attribution> withContest(std::string_view candidate,
                                           std::optional<MatchReason> reason) const;
    bool isGuarded(std::string_view lowercased) const;
    std::string_view ownIdentifierIn(std::string_view lowercased) const;
    const std::string* helperIn(std::string_view lowercased) const;
    bool matchesName(std::string_view lowercased) const;

    AppTarget target_;
    OtherApplications others_;
    bool isApples_ = false;
    bool isTidwen_ = false;
    std::string identifier_;        ///< lower-cased; empty when the target's is none
    bool identifierIsLong_ = false; ///< enough components for the dotted forms
    IdentifierIndex helpers_;       ///< lower-cased
    std::vector<std::pair<std::string, std::string>> declaredHelpers_; ///< lower-cased → as declared, sorted
    std::vector<std::string> embedded_; ///< lower-cased identifiers of all helpers, sorted
    std::vector<std::string> groups_;   ///< as declared
    std::vector<GroupName> groupsOfLeaving_;
    std::string lowercasedName_;
    std::string canonicalName_;       ///< empty when names must not be matched
    std::string canonicalExecutable_; ///< empty likewise
    std::string vendor_;
};

/// A candidate without the extensions that only wrap a name (".plist", ".savedState", ".sfl3" …).
std::string_view withoutWrappingExtension(std::string_view candidate);

} // namespace tidwen
