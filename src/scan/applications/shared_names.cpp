#include "scan/applications/shared_names.h"

#include "base/text.h"

#include <algorithm>
#include <iterator>

namespace tidwen {

namespace {

// Parts of macOS with other identifiers than Apple's: Shortcuts, Kerberos, printing, cron, bundled servers
// and agents.
constexpr std::string_view applesOtherIdentifiers[] = {
    "is.workflow",  "edu.mit.kerberos", "org.cups",     "com.vix.cron", "com.openssh",
    "org.openldap", "org.postfix",      "org.net-snmp", "org.ntp",      "org.isc.named"};

constexpr std::string_view appleDomain = "com.apple.";

constexpr std::string_view commonIdentifiers[] = {"org.qt-project",
                                                  "com.trolltech",
                                                  "org.python",
                                                  "net.java",
                                                  "com.oracle.java",
                                                  "org.openjdk",
                                                  "org.sparkle-project",
                                                  "com.github.squirrel",
                                                  "com.github.electron",
                                                  "com.amplitude",
                                                  "com.bugsnag",
                                                  "com.bugsplat",
                                                  "com.google.firebase",
                                                  "com.microsoft.appcenter",
                                                  "com.mixpanel",
                                                  "com.segment",
                                                  "net.hockeyapp",
                                                  "com.plausiblelabs",
                                                  "com.crashlytics",
                                                  "io.fabric",
                                                  "io.sentry",
                                                  "org.mozilla.crashreporter",
                                                  "org.llvm",
                                                  "org.swift",
                                                  "org.webkit",
                                                  "org.apache",
                                                  "org.gnu"};

constexpr std::string_view commonNames[] = {
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
    "sharedsupport", "users", "volumes", "xpcservices",
    // Executables.
    "adobeair", "applet", "automatorapplicationstub", "droplet", "electron", "javaapplauncher",
    "javaapplicationstub", "nwjs", "universaljavaapplicationstub", "wineskinlauncher"};

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

std::string_view withoutGroupPrefixes(std::string_view lowercased) {
    const auto bare = withoutTeam(lowercased);
    for (const std::string_view mark : {"group.", "groups.", "systemgroup."})
        if (bare.starts_with(mark)) return bare.substr(mark.size());
    return bare;
}

bool isFromApple(std::string_view identifier) {
    return lowercased(identifier.substr(0, appleDomain.size())) == appleDomain;
}

bool isApplesIdentifier(std::string_view identifier) {
    const auto bare = withoutGroupPrefixes(identifier);
    return continues(bare, "com.apple") || continues(identifier, "com.apple")
           || std::any_of(std::begin(applesOtherIdentifiers), std::end(applesOtherIdentifiers),
                          [&](std::string_view other) { return continues(bare, other); });
}

bool isCommonIdentifier(std::string_view identifier) {
    return std::any_of(std::begin(commonIdentifiers), std::end(commonIdentifiers),
                       [&](std::string_view common) { return continues(identifier, common); });
}

bool isPlaceholderIdentifier(std::string_view identifier) {
    return identifier == "com.github.electron" || identifier == "io.nwjs.nwjs";
}

bool isCommonName(std::string_view canonicalName) {
    return std::find(std::begin(commonNames), std::end(commonNames), canonicalName) != std::end(commonNames);
}

} // namespace tidwen
