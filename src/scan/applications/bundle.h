#pragma once

#include "base/path.h"
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
    /// The folder that contains Info.plist: "Contents", the bundle itself when it is flat, or the application
    /// inside the wrapper of an app for iPhone or iPad.
    Path contents;
    Path infoFile; ///< its Info.plist in any letter case, or the path it would have
    std::optional<PropertyListDictionary> info; ///< absent: no Info.plist, or an unreadable one
    bool isDamaged = false;                     ///< an Info.plist exists, or may, and cannot be read

    /// nullopt when the path is not absolute or does not lead to a folder. Accepts names that are not valid
    /// UTF-8: the bundle's owner must be known even if its path cannot be written to JSON.
    static std::optional<Bundle> open(const FileSystem& files, const Path& root);

    const std::string* infoString(std::string_view key) const;
    /// The bundle identifier if it is a non-empty string without NUL bytes.
    std::optional<std::string> identifier() const;
    /// The display name, else the name, else the file name without its extension. May be empty when the
    /// bundle says so.
    std::string name() const;
    /// True for the boolean true, a nonzero number, and the texts "1", "yes", "true" in any letter case.
    bool infoFlag(std::string_view key) const;
    /// Path of the main executable; it need not exist. Always a direct child of the bundle's folder for
    /// executables, whatever Info.plist says.
    Path executable() const;
};

/// Whether the folder contains the Info.plist that makes it a bundle, readable or not. Its name is
/// irrelevant.
bool isBundle(const FileSystem& files, const Path& folder);

/// The bundles nested in a bundle.
struct EmbeddedBundles {
    std::vector<std::string> identifiers;  ///< unique, sorted, without Apple's
    std::vector<std::string> inFrameworks; ///< likewise, of bundles inside its frameworks
    std::vector<Path> linkedPlaces = {};   ///< outside it: to what links in place of its parts lead, resolved
    bool isComplete = true;                ///< everything was searched
    bool isReadable = true;                ///< nothing was found that could not be read
};

/// How far a bundle is searched.
enum class EmbeddedReach {
    own, ///< without its frameworks: many applications carry the same ones, so they do not show ownership
    frameworks, ///< frameworks too: what they contain is in use as long as any application that carries them
    further,    ///< also unusual places, up to a limit; what lies beyond it is not reported as a gap
};

/// The identifiers of everything nested in a bundle: applications, extensions, XPC services, plug-ins and
/// login items, and the privileged tools declared in its Info.plist. Bounded in depth and number; returns
/// early with partial results when `stop` asks for it. Calls `onBundle` for each nested bundle, including
/// those in frameworks that are searched.
EmbeddedBundles findEmbeddedBundles(const FileSystem& files, const Bundle& bundle, EmbeddedReach reach,
                                    const StopToken& stop = {},
                                    const std::function<void(const Bundle&)>& onBundle = {});

/// The identifiers alone, without those in frameworks; empty when the bundle cannot be opened.
std::vector<std::string> embeddedBundleIDs(const FileSystem& files, const Path& bundle,
                                           const StopToken& stop = {});

} // namespace tidwen
