#pragma once

#include "base/path.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/identifier_index.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// Everything on the disk that something found could still belong to: the bundles with what they carry,
/// their groups, names and executables, and whatever else is known to live. Doubt counts as belonging: a
/// leftover that is missed costs some space, a wrong claim costs somebody's data.
class KnownOwners {
  public:
    /// Reads what the bundles carry, unless that is done.
    explicit KnownOwners(const BundleSnapshot& bundles);

    /// More identifiers of what lives; their letter case does not count.
    void add(const std::vector<std::string>& identifiers);
    /// The same, of what lives while nothing else of its maker needs to. Plain words among them are left out.
    void addWithoutMaker(const std::vector<std::string>& identifiers);

    /// Places of what is at work, besides the applications.
    void addPrograms(const std::vector<Path>& programs);

    /// `identifier` is in lower case.
    bool claims(std::string_view identifier) const;

    /// Would an installed application, a helper in it, or its maker call a folder so? What lies in it is
    /// theirs, whatever it is called itself.
    bool ownsFolder(std::string_view name) const;

    /// Somebody who lives could be called so, or begin or go on with it: "Marlin" while "Marlin Notes" is
    /// there. `canonicalName` as `canonicalForm` gives it.
    bool mayMean(std::string_view canonicalName) const;

    /// The path lies in a bundle, under whatever name that was found, or a folder on the way to it, or it, is
    /// called by an identifier that is claimed.
    bool ownsPlace(const Path& path) const;

    /// The item is an application or a program at work, or would take one along.
    bool holdsWhatIsInUse(const Path& item) const;

  private:
    void addIdentifier(std::string_view identifier);
    void addWord(const std::string& canonicalName);
    void addName(std::string_view name, bool isApplication);

    std::set<std::string, std::less<>> identifiers_; ///< lower-cased
    std::set<std::string, std::less<>> makers_;      ///< of the identifiers: "com.example"
    std::set<std::string, std::less<>> names_;       ///< canonical forms, long enough to mean something
    std::set<std::string, std::less<>> folders_;     ///< canonical forms of names and makers of any length
    std::set<std::string, std::less<>> words_; ///< canonical names and pieces of identifiers, five letters on
    std::set<std::string, std::less<>> inUse_; ///< keys of paths: applications and programs at work
    std::set<std::string, std::less<>> bundles_; ///< keys of all paths of all bundles
    IdentifierIndex index_;
};

/// The reverse-DNS identifier in the name of something found, in lower case: without the extension that wraps
/// it, a team prefix, "group.", or the hardware identifier of a per-machine preference. Empty when the name
/// holds no identifier of at least three pieces.
std::string identifierInName(std::string_view name);

/// The same of two pieces, or that begins with no registered top-level domain ("seb.GlacierMac"): many names
/// of files look like that, so it takes another sign to be one.
std::string looseIdentifierInName(std::string_view name);

/// Begins with a registered top-level domain and has at least three pieces of plain characters.
bool isReverseDns(std::string_view identifier);

} // namespace tidwen
