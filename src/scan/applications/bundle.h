#pragma once

#include "base/property_list.h"
#include "base/stop_token.h"
#include "platform/file_system.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// A bundle folder and its Info.plist.
struct Bundle {
    Path root;
    /// The folder that holds Info.plist: "Contents", the bundle itself when it is flat, or the application
    /// that a wrapper from the phone's store holds.
    Path contents;
    Path infoFile; ///< its Info.plist in whatever letter case, or where it would lie
    std::optional<PropertyListDictionary> info; ///< absent: no Info.plist, or one that cannot be read
    bool isDamaged = false;                     ///< there is, or may be, an Info.plist that cannot be read

    /// Nothing when the path does not lead to a folder or is not absolute. A name that is not valid UTF-8 is
    /// taken by its bytes: whose bundle it is has to be known even where it cannot be written down.
    static std::optional<Bundle> open(const FileSystem& files, const Path& root);

    const std::string* infoString(std::string_view key) const;
    /// The bundle identifier when it is a non-empty string without zero bytes.
    std::optional<std::string> identifier() const;
    /// The display name, else the name, else the file name without its extension. May be empty when the
    /// bundle says so.
    std::string name() const;
    /// True for a boolean true, a number that is not zero, and the texts "1", "yes", "true" in any case.
    bool infoFlag(std::string_view key) const;
    /// Where the main executable lies; it need not exist. Always a direct child of the bundle's own folder
    /// for it, whatever Info.plist says.
    Path executable() const;
};

/// The folder holds the Info.plist that makes it a bundle, readable or not; its name does not.
bool isBundle(const FileSystem& files, const Path& folder);

/// What lies inside a bundle.
struct EmbeddedBundles {
    std::vector<std::string> identifiers;  ///< each once, sorted, without Apple's
    std::vector<std::string> inFrameworks; ///< likewise, of what lies in its frameworks
    bool isComplete = true;                ///< looked through to the end
    bool isReadable = true;                ///< nothing on the way was there and could not be read
};

/// How much of a bundle is looked through.
enum class EmbeddedReach {
    own, ///< not its frameworks: many applications carry the same, so they say nothing of whose a find is
    frameworks, ///< these too: what they hold is in use as long as any of the applications is there
    further,    ///< also what lies where nobody expects it, as far as a bound goes, and not missed
};

/// Identifiers that belong to what lies inside a bundle: nested applications, extensions, XPC services,
/// plug-ins and login items, and the privileged tools that its Info.plist declares. Bounded in depth and
/// number; ends early, with what it has, when `stop` asks for it. `onBundle` is called with each nested
/// bundle, those in frameworks that are entered too.
EmbeddedBundles findEmbeddedBundles(const FileSystem& files, const Bundle& bundle, EmbeddedReach reach,
                                    const StopToken& stop = {},
                                    const std::function<void(const Bundle&)>& onBundle = {});

/// The identifiers alone, without those in frameworks; none when the bundle cannot be opened.
std::vector<std::string> embeddedBundleIDs(const FileSystem& files, const Path& bundle,
                                           const StopToken& stop = {});

} // namespace tidwen
