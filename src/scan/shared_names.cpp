#include "scan/shared_names.h"

#include <algorithm>
#include <array>

namespace tidwen {

namespace {

constexpr std::array<std::string_view, 20> commonIdentifiers = {"org.cups",
                                                                "org.qt-project",
                                                                "com.trolltech",
                                                                "org.python",
                                                                "net.java",
                                                                "com.oracle.java",
                                                                "org.openjdk",
                                                                "org.sparkle-project",
                                                                "com.github.squirrel",
                                                                "com.plausiblelabs",
                                                                "com.crashlytics",
                                                                "io.fabric",
                                                                "io.sentry",
                                                                "org.mozilla.crashreporter",
                                                                "org.llvm",
                                                                "org.swift",
                                                                "org.webkit",
                                                                "org.apache",
                                                                "org.gnu",
                                                                "systemgroup.com.apple"};

constexpr std::string_view systemsNames[] = {
    // In "Application Support": contacts, calls, device backups, iCloud Drive, what Siri learned …
    "addressbook", "animoji", "apple", "applepushservice", "appstore", "audio", "callhistorydb",
    "callhistorytransactions", "clouddocs", "cloudkit", "controlcenter", "coreparsec", "crashreporter",
    "differentialprivacy", "diskimages", "facetime", "fileprovider", "icdd", "icloud", "ilifemediabrowser",
    "knowledge", "locationaccessstored", "mobilesync", "networkserviceproxy", "notificationcenter",
    "quicklook", "scripteditor", "sesstorage", "stickers", "syncservices", "tipsd", "transparencyd",
    "translation", "videosubscriptionsd",
    // In "Preferences", "Caches", "Logs" and "/Users/Shared".
    "byhost", "colorsync", "contextstoreagent", "coresimulator", "desktoppictures", "diagnosticreports",
    "directoryservice", "familycircle", "familycircled", "gamekit", "geoservices", "globalpreferences",
    "knowledgeagent", "loginwindow", "mbuseragent", "metadata", "mobilemeaccounts", "opendirectory",
    "passkit", "previouslyrelocateditems", "relocateditems", "scinfo", "siriknowledged",
    "systemconfiguration", "systemuiserver", "temporaryitems",
    // Folders that every Mac, every home or every bundle has.
    "applications", "applicationsupport", "caches", "caskroom", "cellar", "containers", "contents", "desktop",
    "developer", "documents", "downloads", "extensions", "frameworks", "groupcontainers", "helpers",
    "homebrew", "launchagents", "launchdaemons", "libexec", "library", "loginitems", "macos", "movies",
    "pictures", "plugins", "private", "privilegedhelpertools", "public", "resources", "share", "shared",
    "sharedsupport", "users", "volumes", "xpcservices"};

bool continues(std::string_view identifier, std::string_view beginning) {
    return identifier.starts_with(beginning)
           && (identifier.size() == beginning.size() || identifier[beginning.size()] == '.');
}

std::string_view withoutTeam(std::string_view identifier) {
    constexpr std::size_t teamLength = 10;
    const auto team = identifier.substr(0, teamLength);
    const bool hasTeam = identifier.size() > teamLength && identifier[teamLength] == '.'
                         && std::all_of(team.begin(), team.end(), [](char c) {
                                return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
                            });
    return hasTeam ? identifier.substr(teamLength + 1) : identifier;
}

} // namespace

bool isApplesIdentifier(std::string_view identifier) {
    auto bare = withoutTeam(identifier);
    for (const std::string_view mark : {"group.", "groups.", "systemgroup."})
        if (bare.starts_with(mark)) {
            bare.remove_prefix(mark.size());
            break;
        }
    return continues(bare, "com.apple") || continues(identifier, "com.apple");
}

bool isCommonIdentifier(std::string_view identifier) {
    return std::any_of(commonIdentifiers.begin(), commonIdentifiers.end(),
                       [&](std::string_view common) { return continues(identifier, common); });
}

bool isSystemsName(std::string_view canonicalName) {
    return std::find(std::begin(systemsNames), std::end(systemsNames), canonicalName)
           != std::end(systemsNames);
}

} // namespace tidwen
