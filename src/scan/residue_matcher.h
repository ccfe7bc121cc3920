#pragma once

#include "scan/app_target.h"
#include "scan/identifier_index.h"
#include "scan/other_applications.h"
#include "scan/trace.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {

/// Why a candidate is the target's, and who else has as good a claim to it.
struct Attribution {
    MatchReason reason;
    std::optional<std::string> contestedBy; ///< as in `Trace`
};

/// Decides whether a name found somewhere belongs to one application, and why. Conservative: identifiers
/// first, names only when long and distinctive, and never what is Apple's, this program's or another
/// installed application's. A pure value; may be used from any thread.
class ResidueMatcher {
  public:
    /// `helperBundleIDs` count as the target's own; those of another installed application are dropped here.
    /// `sharedGroups`: lower-cased application groups that other installed applications declare too, each
    /// with the identifier of one that does.
    ResidueMatcher(AppTarget target, OtherApplications others,
                   const std::vector<std::string>& helperBundleIDs,
                   const std::map<std::string, std::string>& sharedGroups);

    /// The identifier rules, and as their last step the rule on the target's name.
    std::optional<MatchReason> matchIdentifier(std::string_view candidate) const;
    std::optional<MatchReason> matchExecutable(std::string_view candidate) const;
    /// Groups compare with and without a leading team prefix ("ABCDE12345.").
    std::optional<MatchReason> matchAppGroup(std::string_view candidate) const;

    /// Another installed application that claims the candidate at least as strongly as the target does by
    /// `reason`: its identifier, or the application group that it declares too.
    std::optional<std::string> contestedBy(std::string_view candidate, const MatchReason& reason) const;

    // The same with who contests it.
    std::optional<Attribution> attributeIdentifier(std::string_view candidate) const;
    /// By identifier, else by executable.
    std::optional<Attribution> attribute(std::string_view candidate) const;
    /// By application group, else as above.
    std::optional<Attribution> attributeGroup(std::string_view candidate) const;

    /// Apple's or this program's own: never the target's, whatever else speaks for it.
    bool isOffLimits(std::string_view candidate) const;

    /// The target's name is too short or too common to find anything by.
    bool nameMatchingDisabled() const { return canonicalName_.empty(); }

    /// The vendor piece of the target's identifier in canonical form ("example" of "com.example.app"); empty
    /// when it is shorter than 4 characters.
    const std::string& vendor() const { return vendor_; }

    const AppTarget& target() const { return target_; }
    const OtherApplications& others() const { return others_; }

  private:
    struct Group {
        std::string declared;
        std::optional<std::string> sharedWith = {}; ///< identifier of another application
    };

    std::optional<Attribution> withContest(std::string_view candidate,
                                           std::optional<MatchReason> reason) const;
    bool isGuarded(std::string_view lowercased) const;
    const std::string* helperIn(std::string_view lowercased) const;
    bool matchesName(std::string_view lowercased) const;

    AppTarget target_;
    OtherApplications others_;
    bool isApples_ = false;
    bool isTidwen_ = false;
    std::string identifier_;             ///< lower-cased
    bool identifierIsLong_ = false;      ///< enough components for the dotted forms
    bool identifierSaysNothing_ = false; ///< one word that others bear too
    IdentifierIndex helpers_;            ///< lower-cased
    std::vector<std::pair<std::string, std::string>> declaredHelpers_; ///< lower-cased → as declared, sorted
    std::vector<Group> groups_;
    std::string lowercasedName_;
    std::string canonicalName_;       ///< empty when names must not be matched
    bool nameIsCommon_ = false;       ///< of folders that macOS or everybody has
    std::string canonicalExecutable_; ///< empty likewise
    std::string vendor_;
};

/// A candidate without the extensions that only wrap a name (".plist", ".savedState", ".sfl3" …).
std::string_view withoutWrappingExtension(std::string_view candidate);

} // namespace tidwen
