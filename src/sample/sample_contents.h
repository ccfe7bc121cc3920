#pragma once

#include <string_view>
#include <vector>

/// The contents of the sample volume as tables. All names are invented. Paths are the Mac's; "~" is the home
/// of the only user.
namespace tidwen::sample {

inline constexpr std::string_view home = "/Users/alice";

/// A bundle: an application, or a helper, extension or service inside one.
struct Bundle {
    std::string_view path;
    std::string_view bundleID;
    std::string_view name;
    std::string_view version = "1.0";
    std::string_view teamID = {};              ///< empty: not signed
    std::vector<std::string_view> groups = {}; ///< application groups in its entitlements
    int kilobytes = 24;                        ///< of resources
    std::string_view category = {};            ///< "productivity", without the constant prefix
    bool isBackgroundAgent = false;
    bool hasBinaryInfo = false;
    bool isUniversal = false;
};

/// A file, or with a trailing slash an empty folder. Its extension determines the kind of content.
struct Item {
    std::string_view path;
    int kilobytes = 1;
};

struct Link {
    std::string_view path;
    std::string_view target;
};

/// A sandbox or group container, identified by its metadata file.
struct Container {
    std::string_view folder;
    std::string_view identifier;
};

/// A launchd job and the path of its property list.
struct Job {
    std::string_view plist;
    std::string_view label;
    std::string_view program;
    bool hasBinaryForm = false;
    bool isSwitchedOff = false; ///< by a system override, not by its own property list
};

/// An installer receipt. Files are relative to `prefix`; a folder ends with a slash.
struct Package {
    std::string_view packageID;
    std::string_view version;
    std::string_view prefix;
    std::vector<std::string_view> files;
};

/// A row of a privacy database.
struct Grant {
    bool isSystemScope = false;
    std::string_view service; ///< without the constant "kTCCService"
    std::string_view client;
    int authValue = 2; ///< 0 refused, 2 granted, 3 limited
    bool isPathClient = false;
};

/// A row of the system's extension database.
struct SystemExtension {
    std::string_view bundleID;
    std::string_view teamID;
    std::string_view application;
};

std::vector<Bundle> bundles();
std::vector<Item> userItems();
std::vector<Item> systemItems();
std::vector<Link> links();
std::vector<Container> containers();
std::vector<Job> jobs();
std::vector<Package> packages();
std::vector<Grant> grants();
std::vector<SystemExtension> systemExtensions();

} // namespace tidwen::sample
