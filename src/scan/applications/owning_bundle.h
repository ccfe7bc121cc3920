#pragma once

#include "base/path.h"
#include "scan/applications/launch_item.h"

#include <string>
#include <vector>

namespace tidwen {

/// A bundle on this Mac that may own data.
struct OwningBundle {
    Path url;                  ///< where it was found (one of its paths)
    Path place;                ///< without links; each bundle is listed once
    std::string bundleID = {}; ///< as declared; empty when its Info.plist names none or cannot be read
    std::string name = {};     ///< display name, else file name without extension
    std::vector<std::string> names = {}; ///< all: file stems, CFBundleName, CFBundleDisplayName, executable
    std::vector<Path> foundAs = {};      ///< all paths it was found under; may lack `url` and `place`
    bool isApplication = false;          ///< ".app"
    bool isReadable = false;             ///< its Info.plist exists and could be read

    friend bool operator==(const OwningBundle&, const OwningBundle&) = default;
};

/// What a bundle declares and contains.
struct BundleContents {
    std::vector<std::string>
        embeddedIDs;                 ///< helpers, extensions, privileged tools, including those in frameworks
    std::vector<LaunchItem> jobs;    ///< embedded launchd jobs, agents first
    std::vector<std::string> groups; ///< application groups as declared, including those of nested bundles
    bool isComplete = false;         ///< read completely
    bool isReadable = true;          ///< false: incomplete because a part of it could not be read
    std::vector<std::string> embeddedNames = {}; ///< names of the nested bundles, sorted
    std::vector<Path> linkedPlaces = {}; ///< outside it: to what links in place of its parts lead, resolved

    friend bool operator==(const BundleContents&, const BundleContents&) = default;
};

} // namespace tidwen
