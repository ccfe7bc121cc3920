#include "scan/policy/search_location.h"

#include "base/path.h"
#include "base/text.h"

#include <optional>
#include <string>
#include <string_view>

namespace tidwen {
namespace {

using Style = SearchLocation::Style;

struct Row {
    std::string_view path;
    TraceCategory category;
    Style style = Style::directChildren;
    bool isSystemDomain = false;
};

// This is the order of the search and of the traces shown.
constexpr Row userRows[] = {
    {"Application Support", TraceCategory::supportFiles, Style::vendorNestedChildren},
    {"Containers", TraceCategory::containers, Style::containerDirectories},
    {"Daemon Containers", TraceCategory::containers, Style::containerDirectories},
    {"Group Containers", TraceCategory::containers},
    {"Preferences", TraceCategory::preferences},
    {"Preferences/ByHost", TraceCategory::preferences},
    {"Caches", TraceCategory::caches},
    {"HTTPStorages", TraceCategory::caches},
    {"WebKit", TraceCategory::caches},
    {"Saved Application State", TraceCategory::caches},
    {"Logs", TraceCategory::logs},
    {"Logs/DiagnosticReports", TraceCategory::logs, Style::prefixedReports},
    {"Application Support/CrashReporter", TraceCategory::logs, Style::prefixedReports},
    {"Cookies", TraceCategory::caches},
    {"Application Scripts", TraceCategory::supportFiles},
    {"Autosave Information", TraceCategory::supportFiles},
    {"Internet Plug-Ins", TraceCategory::supportFiles},
    {"PreferencePanes", TraceCategory::supportFiles},
    {"Services", TraceCategory::supportFiles},
    {"QuickLook", TraceCategory::supportFiles},
    {"Spotlight", TraceCategory::supportFiles},
    {"Input Methods", TraceCategory::supportFiles},
    {"Screen Savers", TraceCategory::supportFiles},
    {"ColorPickers", TraceCategory::supportFiles},
    {"Fonts", TraceCategory::supportFiles},
    {"Frameworks", TraceCategory::supportFiles},
    {"Audio/Plug-Ins/Components", TraceCategory::supportFiles},
    {"Audio/Plug-Ins/HAL", TraceCategory::supportFiles},
    {"Audio/Plug-Ins/MIDI Drivers", TraceCategory::supportFiles},
    {"Audio/Plug-Ins/VST", TraceCategory::supportFiles},
    {"Audio/Plug-Ins/VST3", TraceCategory::supportFiles},
    {"Application Support/com.apple.sharedfilelist/com.apple.LSSharedFileList.ApplicationRecentDocuments",
     TraceCategory::caches},
    {"LaunchAgents", TraceCategory::launchItems, Style::launchItemPlists},
};

constexpr Row systemRows[] = {
    {"/Library/LaunchDaemons", TraceCategory::launchItems, Style::launchItemPlists, true},
    {"/Library/LaunchAgents", TraceCategory::launchItems, Style::launchItemPlists},
    {"/Library/PrivilegedHelperTools", TraceCategory::privilegedTools},
    {"/Library/Application Support", TraceCategory::supportFiles, Style::vendorNestedChildren},
    {"/Library/Preferences", TraceCategory::preferences},
    {"/Library/Caches", TraceCategory::caches},
    {"/Library/Extensions", TraceCategory::supportFiles},
    {"/Library/Internet Plug-Ins", TraceCategory::supportFiles},
    {"/Library/PreferencePanes", TraceCategory::supportFiles},
    {"/Library/Logs", TraceCategory::logs},
    {"/Library/Logs/DiagnosticReports", TraceCategory::logs, Style::prefixedReports},
    {"/Library/QuickLook", TraceCategory::supportFiles},
    {"/Library/Spotlight", TraceCategory::supportFiles},
    {"/Library/Input Methods", TraceCategory::supportFiles},
    {"/Library/Screen Savers", TraceCategory::supportFiles},
    {"/Library/ScriptingAdditions", TraceCategory::supportFiles},
    {"/Library/Frameworks", TraceCategory::supportFiles},
    {"/Library/Audio/Plug-Ins/Components", TraceCategory::supportFiles},
    {"/Library/Audio/Plug-Ins/HAL", TraceCategory::supportFiles},
    {"/Library/Audio/Plug-Ins/VST", TraceCategory::supportFiles},
    {"/Library/Audio/Plug-Ins/VST3", TraceCategory::supportFiles},
    {"/private/var/db/receipts", TraceCategory::receipts},
    {"/Users/Shared", TraceCategory::supportFiles},
};

// Everyone may write here, so no administrator is needed.
constexpr std::string_view sharedFolder = "/Users/Shared";

void appendTemporaryFolder(std::vector<SearchLocation>& locations, const std::optional<Path>& folder) {
    if (!folder || !folder->isAbsolute() || !isValidUtf8(folder->string())) return;
    locations.push_back({.url = folder->standardized(), .category = TraceCategory::caches});
}

} // namespace

std::vector<SearchLocation> userLocations(const UserEnvironment& user) {
    std::vector<SearchLocation> locations;
    for (const Row& row : userRows)
        locations.push_back({.url = (user.libraryFolder() / row.path).standardized(),
                             .category = row.category,
                             .style = row.style,
                             .isSystemDomain = row.isSystemDomain,
                             .requiresRoot = false,
                             .requiresFullDiskAccess = true});
    appendTemporaryFolder(locations, user.cacheFolder);
    appendTemporaryFolder(locations, user.temporaryFolder);
    return locations;
}

std::vector<SearchLocation> systemLocations() {
    std::vector<SearchLocation> locations;
    for (const Row& row : systemRows)
        locations.push_back({.url = Path(std::string(row.path)),
                             .category = row.category,
                             .style = row.style,
                             .isSystemDomain = row.isSystemDomain,
                             .requiresRoot = row.path != sharedFolder,
                             .requiresFullDiskAccess = false});
    return locations;
}

std::vector<SearchLocation> searchLocations(const UserEnvironment& user) {
    auto locations = userLocations(user);
    for (auto& location : systemLocations())
        locations.push_back(std::move(location));
    return locations;
}

} // namespace tidwen
