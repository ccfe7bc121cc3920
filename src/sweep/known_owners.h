#pragma once

#include "base/path.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/identifier_index.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// Everything on the disk that could own a find: the bundles with their contents, groups, names and
/// executables, and whatever else is known to be in use. In doubt an owner exists: a missed leftover costs
/// some space, a wrong claim costs a user's data.
class KnownOwners {
  public:
    /// Reads the contents of the bundles, unless they are already read.
    explicit KnownOwners(const BundleSnapshot& bundles);

    /// Adds identifiers in use, in any letter case.
    void add(const std::vector<std::string>& identifiers);
    /// The same for identifiers whose vendor need not have anything else in use. Ignores plain words.
    void addWithoutMaker(const std::vector<std::string>& identifiers);

    /// Adds places in use besides the applications.
    void addPrograms(const std::vector<Path>& programs);

    /// `identifier` is in lower case.
    bool claims(std::string_view identifier) const;

    /// Whether an installed application, a helper in it, or its vendor would give a folder this name.
    /// Everything inside belongs to them, whatever its name.
    bool ownsFolder(std::string_view name) const;

    /// Whether an owner in use may have this name, or one that is a prefix of it or continues it: "Marlin"
    /// while "Marlin Notes" exists. `canonicalName` as returned by `canonicalForm`.
    bool mayMean(std::string_view canonicalName) const;

    /// Whether the path is inside a bundle, under any path that bundle was found under, or it or a folder in
    /// its path has a claimed identifier as its name.
    bool ownsPlace(const Path& path) const;

    /// Whether the item is an application or program in use, or contains one.
    bool holdsWhatIsInUse(const Path& item) const;

  private:
    void addIdentifier(std::string_view identifier);
    void addWord(const std::string& canonicalName);
    void addName(std::string_view name, bool isApplication);

    std::set<std::string, std::less<>> identifiers_; ///< lower-cased
    std::set<std::string, std::less<>> makers_;      ///< of the identifiers: "com.example"
    std::set<std::string, std::less<>> names_;       ///< canonical forms, long enough to be distinctive
    std::set<std::string, std::less<>> folders_;     ///< canonical forms of names and vendors of any length
    std::set<std::string, std::less<>>
        words_; ///< canonical names and components of identifiers, five letters or more
    std::set<std::string, std::less<>> inUse_;   ///< path keys of applications and programs in use
    std::set<std::string, std::less<>> bundles_; ///< keys of all paths of all bundles
    IdentifierIndex index_;
};

/// The reverse-DNS identifier in the name of a find, in lower case, without the extension that wraps it, a
/// team prefix, "group.", or the hardware identifier of a per-machine preference. Empty when the name
/// contains no identifier of at least three components.
std::string identifierInName(std::string_view name);

/// The same with two components, or without a registered top-level domain ("seb.GlacierMac"): many file names
/// look like that, so it takes further evidence.
std::string looseIdentifierInName(std::string_view name);

/// Begins with a registered top-level domain and has at least three components of plain characters.
bool isReverseDns(std::string_view identifier);

} // namespace tidwen
