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

/// Why a candidate belongs to the target, and who else has an equal claim.
struct Attribution {
    MatchReason reason;
    std::optional<Claimant> contestedBy = {}; ///< as in `Trace`
};

/// Decides whether a name belongs to one application, and why. Conservative: identifiers first; names only
/// when long and distinctive; never anything of Apple, of this program or of another installed application.
/// Immutable; thread-safe.
class ResidueMatcher {
  public:
    /// `helperBundleIDs` count as the target's own; those that are not identifiers, or belong to another
    /// installed application, are dropped here.
    ///
    /// `groupsOfLeaving`: the application groups declared by applications removed in the same run. Such a
    /// group is shared even if nobody contests it.
    ResidueMatcher(AppTarget target, OtherApplications others,
                   const std::vector<std::string>& helperBundleIDs,
                   const std::vector<std::string>& groupsOfLeaving = {});

    /// The identifier rules, followed by the rule on the target's name.
    std::optional<MatchReason> matchIdentifier(std::string_view candidate) const;
    std::optional<MatchReason> matchExecutable(std::string_view candidate) const;
    /// Groups are compared with and without a leading team prefix ("ABCDE12345.").
    std::optional<MatchReason> matchAppGroup(std::string_view candidate) const;

    /// Another bundle whose claim to the candidate is at least as strong as the target's `reason`: by
    /// identifier or name, an embedded helper, or a declared group.
    std::optional<Claimant> contestedBy(std::string_view candidate, const MatchReason& reason) const;

    // The same with the contesting bundle.
    std::optional<Attribution> attributeIdentifier(std::string_view candidate) const;
    /// By identifier, else by executable.
    std::optional<Attribution> attribute(std::string_view candidate) const;
    /// For the name of a group's folder: by application group, else as above.
    std::optional<Attribution> attributeGroup(std::string_view candidate) const;

    /// Who else the name of an item points to that was found by other evidence than this name.
    std::optional<Claimant> otherOwnerOf(std::string_view candidate) const;

    /// Whether the file name of a bundle may be matched to the target. A bundle's extension is no part of an
    /// identifier: "Acme.Input.app" is the input method of Acme, not data of an application that uses this as
    /// its identifier.
    bool mayClaimBundle(std::string_view fileName) const;

    /// Whether a bundle of this identifier belongs to the target: it equals the target's identifier,
    /// continues it, or is that of a helper in the target's bundle.
    bool isOwnIdentifier(std::string_view bundleID) const;

    /// Belongs to Apple or to this program: never the target's, whatever the evidence.
    bool isOffLimits(std::string_view candidate) const;

    /// The target's name is too short or too common to match by, or has the form of an identifier, which a
    /// name must not claim.
    bool nameMatchingDisabled() const { return canonicalName_.empty(); }
    /// What the target calls its identifier is none, or somebody's whose items are never its own.
    bool identifierMatchingDisabled() const { return identifier_.empty() || isGuarded(identifier_); }

    /// Identifiers of helpers in the target that are none, as declared; nothing is looked for by them.
    const std::vector<std::string>& unusableHelpers() const { return unusableHelpers_; }

    /// The vendor component of the target's identifier in canonical form ("example" of "com.example.app");
    /// empty when it is shorter than 4 characters.
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
    std::string identifier_;        ///< lower-cased; empty when the target has no valid one
    bool identifierIsLong_ = false; ///< enough components for the dotted forms
    IdentifierIndex helpers_;       ///< lower-cased
    std::vector<std::string> unusableHelpers_;
    std::vector<std::pair<std::string, std::string>> declaredHelpers_; ///< lower-cased → as declared, sorted
    std::vector<std::string> embedded_; ///< lower-cased identifiers of all helpers, sorted
    std::vector<std::string> groups_;   ///< as declared
    std::vector<GroupName> groupsOfLeaving_;
    std::string lowercasedName_;
    std::string canonicalName_;       ///< empty when names must not be matched
    std::string canonicalExecutable_; ///< likewise
    std::string vendor_;
};

/// A candidate without extensions that only wrap a name (".plist", ".savedState", ".sfl3" …).
std::string_view withoutWrappingExtension(std::string_view candidate);

} // namespace tidwen
