#include "scan/permissions/permission_audit.h"

#include "base/path.h"
#include "base/text.h"
#include "scan/permissions/privacy_database.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <sqlite3.h>
#include <utility>

namespace tidwen {
namespace {

using Scope = PermissionGrant::Scope;
using State = PermissionGrant::State;

constexpr std::string_view servicePrefix = "kTCCService";

// Without the prefix, and the key without "permission.".
constexpr std::pair<std::string_view, std::string_view> services[] = {
    {"Accessibility", "accessibility"},
    {"AddressBook", "contacts"},
    {"AppleEvents", "automation"},
    {"BluetoothAlways", "bluetooth"},
    {"Calendar", "calendars"},
    {"Camera", "camera"},
    {"DeveloperTool", "developerTools"},
    {"FileProviderDomain", "fileProvider"},
    {"FocusStatus", "focusStatus"},
    {"ListenEvent", "inputMonitoring"},
    {"Liverpool", "location"},
    {"MediaLibrary", "mediaLibrary"},
    {"Microphone", "microphone"},
    {"Motion", "motion"},
    {"Photos", "photos"},
    {"PostEvent", "sendingKeystrokes"},
    {"Reminders", "reminders"},
    {"ScreenCapture", "screenRecording"},
    {"SpeechRecognition", "speechRecognition"},
    {"SystemPolicyAllFiles", "fullDisk"},
    {"SystemPolicyAppBundles", "appManagement"},
    {"SystemPolicyAppData", "otherAppsData"},
    {"SystemPolicyDesktopFolder", "desktop"},
    {"SystemPolicyDocumentsFolder", "documents"},
    {"SystemPolicyDownloadsFolder", "downloads"},
    {"SystemPolicyNetworkVolumes", "networkVolumes"},
    {"SystemPolicyRemovableVolumes", "removableVolumes"},
    {"SystemPolicySysAdminFiles", "adminFiles"},
    {"Ubiquity", "icloudDrive"},
    {"Willow", "homeData"},
};

// Some sixty services exist; macOS never writes a database with more for one application.
constexpr std::size_t maximumServices = 1'000;

constexpr const char* query =
    "SELECT service, auth_value, client_type FROM access WHERE client = ? OR client = ?";

State stateOf(std::int64_t authValue) {
    switch (authValue) {
    case 0:
        return {State::Kind::denied};
    case 2:
    case 5:
        return {State::Kind::granted};
    case 3:
        return {State::Kind::limited};
    default:
        return {State::Kind::unknown, authValue};
    }
}

int weight(State::Kind kind) {
    switch (kind) {
    case State::Kind::unknown:
        return 0;
    case State::Kind::denied:
        return 1;
    case State::Kind::limited:
        return 2;
    case State::Kind::granted:
        return 3;
    }
    return 0;
}

/// One service may have a row by identifier and one by path, or several of different scope: the one that
/// grants more is kept, and the identifier before the path.
void fold(PermissionGrant& kept, const PermissionGrant& row) {
    const int difference = weight(row.state.kind) - weight(kept.state.kind);
    const bool isAnyByPath = kept.isPathClient || kept.isAlsoByPath || row.isPathClient;
    if (difference > 0 || (difference == 0 && kept.isPathClient && !row.isPathClient)) kept = row;
    kept.isAlsoByPath = isAnyByPath && !kept.isPathClient;
}

struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

bool bind(sqlite3_stmt* statement, int index, const std::string& text) {
    return sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT)
           == SQLITE_OK;
}

/// The grants in one database; nullopt when the query did not complete.
std::optional<std::vector<PermissionGrant>> readGrants(const PrivacyDatabase& database, Scope scope,
                                                       const std::string& bundleID, const Path& bundle) {
    sqlite3_stmt* prepared = nullptr;
    const int status = sqlite3_prepare_v2(database.handle(), query, -1, &prepared, nullptr);
    const Statement statement(prepared);
    if (status != SQLITE_OK || !bind(prepared, 1, bundleID)
        || !bind(prepared, 2, bundle.standardized().string()))
        return std::nullopt;

    std::map<std::string, PermissionGrant> byService;
    int step = sqlite3_step(prepared);
    for (; step == SQLITE_ROW; step = sqlite3_step(prepared)) {
        const auto* service = reinterpret_cast<const char*>(sqlite3_column_text(prepared, 0));
        if (!service) continue;
        const PermissionGrant row = {.service = validUtf8(service),
                                     .state = stateOf(sqlite3_column_int64(prepared, 1)),
                                     .scope = scope,
                                     .isPathClient = sqlite3_column_int64(prepared, 2) == 1};
        fold(byService.emplace(row.service, row).first->second, row);
        if (byService.size() > maximumServices) return std::nullopt;
    }
    if (step != SQLITE_DONE) return std::nullopt;

    std::vector<PermissionGrant> grants;
    grants.reserve(byService.size());
    for (auto& [service, grant] : byService)
        grants.push_back(std::move(grant));
    return grants;
}

} // namespace

std::string_view name(State::Kind kind) {
    switch (kind) {
    case State::Kind::unknown:
        return "unknown";
    case State::Kind::granted:
        return "granted";
    case State::Kind::limited:
        return "limited";
    case State::Kind::denied:
        return "denied";
    }
    return {};
}

std::string_view name(Scope scope) {
    return scope == Scope::user ? "user" : "system";
}

std::string permissionTitle(std::string_view service, const Texts& texts) {
    if (!service.starts_with(servicePrefix)) return std::string(service);
    const auto ownName = service.substr(servicePrefix.size());
    for (const auto& [known, key] : services)
        if (known == ownName) return texts.text("permission." + std::string(key));
    return std::string(ownName);
}

Path PermissionAudit::databasePath(Scope scope, const UserEnvironment& user) {
    const Path library = scope == Scope::user ? user.libraryFolder() : Path("/Library");
    return library / "Application Support/com.apple.TCC/TCC.db";
}

PermissionAudit::Result PermissionAudit::audit(const std::string& bundleID, const Path& bundle) const {
    Result result;
    for (const Scope scope : {Scope::user, Scope::system}) {
        const auto database = readPrivacyDatabase(files_, databasePath(scope, user_));
        if (!database && database.error() == PrivacyDatabaseError::missing) continue;
        auto grants = database ? readGrants(*database, scope, bundleID, bundle) : std::nullopt;
        if (!grants)
            result.unreadable.push_back(scope);
        else
            std::move(grants->begin(), grants->end(), std::back_inserter(result.grants));
    }

    std::vector<std::pair<std::string, PermissionGrant>> titled;
    for (auto& grant : result.grants) {
        auto title = permissionTitle(grant.service, texts_);
        titled.emplace_back(std::move(title), std::move(grant));
    }
    // The grants are already sorted with the user's first and by service, which decides equal titles.
    std::stable_sort(titled.begin(), titled.end(), [&](const auto& a, const auto& b) {
        return compareForDisplay(a.first, b.first, texts_.language()) < 0;
    });
    std::transform(titled.begin(), titled.end(), result.grants.begin(),
                   [](auto& entry) { return std::move(entry.second); });
    return result;
}

} // namespace tidwen
