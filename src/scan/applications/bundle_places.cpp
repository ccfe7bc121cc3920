#include "scan/applications/bundle_places.h"

#include "base/path.h"
#include "platform/file_absence.h"

#include <algorithm>
#include <string_view>

namespace tidwen {
namespace {

// Suites use nested folders: "/Applications/Maker/Suite 2024/Tools/Extras/Tool.app". Deeper folders prevent
// the claim that an application is gone, so the limit is far above what suites need.
constexpr int applicationDepth = 12;
// More than any Mac has.
constexpr std::size_t maximumHomes = 200;

// Games and toolboxes: "Application Support/Store/library/common/Game/Game.app".
constexpr int furtherSupportDepth = 6;
// People and vendors nest folders; deeper ones are not reported as gaps, because a person's documents can be
// nested without limit.
constexpr int furtherDepth = 5;

struct Row {
    std::string_view path;
    int depth = 0;
    int linkDepth = 0;
    int furtherDepth = 0;
};

constexpr Row systemRows[] = {
    {""},
    {"Users/Shared", 3, 1, furtherDepth},
    {"opt", 2, 1, furtherDepth},
    {"opt/homebrew/Caskroom", 2},
    {"opt/homebrew/Cellar", 2},
    {"usr/local", 0, 0, furtherDepth},
    {"usr/local/Caskroom", 2},
    {"usr/local/Cellar", 2},
    {"usr/local/opt", 1},
};

// Where a person keeps applications besides the Applications folder. The home itself comes first.
constexpr Row homeRows[] = {
    {"", 0, 0, 4},
    {"Desktop", 2, 0, furtherDepth},
    {"Downloads", 2, 0, furtherDepth},
    {"Documents", 1, 0, furtherDepth},
    {"Games", 3, 0, furtherDepth},
};

// Below "/Library" and the Library of each home. Vendors have folders of their own in most of them.
constexpr Row libraryRows[] = {
    {"Address Book Plug-Ins"},
    {"Application Support", 1, 0, furtherSupportDepth},
    {"Audio/MIDI Drivers"},
    {"Audio/Plug-Ins", 2, 0, furtherDepth},
    {"Automator", 1},
    {"Bundles", 1},
    {"ColorPickers"},
    {"Components"},
    {"Compositions"},
    {"Contextual Menu Items"},
    {"CoreMediaIO/Plug-Ins", 2},
    {"DirectoryServices/PlugIns"},
    {"DriverExtensions", 1},
    {"Extensions", 1},
    {"Filesystems", 1},
    {"Frameworks", 1},
    {"Google", 1},
    {"Graphics", 2},
    {"Image Capture", 2},
    {"Input Methods", 1},
    {"Internet Plug-Ins", 1},
    {"Java", 0, 0, furtherDepth},
    {"Keyboard Layouts"},
    {"Mail/Bundles"},
    {"PDF Services"},
    {"PreferencePanes", 1},
    {"Printers", 3},
    {"PrivilegedHelperTools", 1},
    {"QuickLook", 1},
    {"QuickTime", 1},
    {"Screen Savers", 1},
    {"ScriptingAdditions"},
    {"Scripts", 2},
    {"Security/SecurityAgentPlugins"},
    {"Services", 1},
    {"Spotlight", 1},
    {"SystemExtensions", 1},
    {"Video/Plug-Ins", 1},
    {"Widgets"},
    {"Workflows", 0, 0, furtherDepth},
    {"iTunes/iTunes Plug-ins"},
};

BundlePlace placeBelow(const Path& folder, const Row& row, bool isOptional = false) {
    return {.folder = row.path.empty() ? folder : folder / row.path,
            .depth = row.depth,
            .isOptional = isOptional,
            .linkDepth = row.linkDepth,
            .furtherDepth = row.furtherDepth};
}

/// One listing tells which of the many folders in a Library exist. An unreadable one is reported once, as a
/// whole; so is one that is a broken link.
void addLibrary(std::vector<BundlePlace>& places, const FileSystem& files, const Path& library,
                std::vector<Path>& unreadable) {
    const auto entries = files.list(library);
    if (entries)
        for (const auto& row : libraryRows)
            places.push_back(placeBelow(library, row));
    else if (!isAbsence(entries.error()) || files.exists(library))
        unreadable.push_back(library);
}

/// Projects build applications into "<project>/Build/Products/<configuration>".
void addBuildProducts(std::vector<BundlePlace>& places, const FileSystem& files, const Path& home) {
    constexpr std::size_t maximumProjects = 500;
    const Path derived = home / "Library/Developer/Xcode/DerivedData";
    const auto projects = files.list(derived);
    if (!projects) return;
    std::size_t count = 0;
    for (const auto& project : *projects)
        if (project.kind == FileKind::directory && ++count <= maximumProjects)
            places.push_back({.folder = derived / project.name / "Build/Products", .depth = 1});
}

} // namespace

std::vector<Path> homesOnDisk(const FileSystem& files, const UserEnvironment& user,
                              std::vector<Path>& unreadable) {
    std::vector<Path> homes = {user.home};
    const auto add = [&](const Path& home) {
        if (homes.size() < maximumHomes && std::find(homes.begin(), homes.end(), home) == homes.end())
            homes.push_back(home);
    };
    const Path users("/Users");
    if (const auto entries = files.list(users)) {
        for (const auto& entry : *entries)
            if ((entry.kind == FileKind::directory || entry.kind == FileKind::symbolicLink)
                && entry.name != "Shared")
                add(users / entry.name);
    } else if (entries.error().fault != FileFault::missing) {
        unreadable.push_back(users);
    }
    for (const auto& home : user.otherHomes)
        add(home);
    return homes;
}

std::vector<BundlePlace> bundlePlaces(const FileSystem& files, const UserEnvironment& user,
                                      std::vector<Path>& unreadable) {
    constexpr Row applications = {"Applications", applicationDepth, applicationDepth + 1};
    std::vector<BundlePlace> places = {placeBelow(Path("/"), applications)};
    const auto homes = homesOnDisk(files, user, unreadable);
    for (const auto& home : homes)
        places.push_back(placeBelow(home, applications));
    for (auto& place : places)
        place.isCountedOut = true;
    for (const auto& row : systemRows)
        places.push_back(placeBelow(Path("/"), row));
    addLibrary(places, files, Path("/Library"), unreadable);
    for (const auto& home : homes) {
        addLibrary(places, files, home / "Library", unreadable);
        for (const auto& row : homeRows) {
            places.push_back(placeBelow(home, row, home != user.home));
            places.back().isHome = row.path.empty();
        }
        addBuildProducts(places, files, home);
    }
    return places;
}

} // namespace tidwen
