#pragma once

#include "base/path.h"
#include "base/texts.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/app_target.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// A privacy permission that the user has granted or denied.
struct PermissionGrant {
    struct State {
        enum class Kind { unknown, granted, limited, denied };
        Kind kind = Kind::unknown;
        std::int64_t rawValue = 0; ///< value in the database; meaningful only for `unknown`
        friend bool operator==(const State&, const State&) = default;
    };
    enum class Scope { user, system };

    std::string service; ///< "kTCCServiceCamera"
    State state;
    Scope scope = Scope::user;
    bool isPathClient = false; ///< the database identifies the client by its path
    bool isAlsoByPath = false; ///< a row by its path was folded into this one, which is not by path
    friend bool operator==(const PermissionGrant&, const PermissionGrant&) = default;
};

std::string_view name(PermissionGrant::State::Kind kind);
std::string_view name(PermissionGrant::Scope scope);

/// The display name of a service ("Camera"); for an unknown one its identifier without "kTCCService".
std::string permissionTitle(std::string_view service, const Texts& texts);

/// Reads the privacy databases ("TCC.db", SQLite; table "access") for one application. The file is copied
/// into memory and queried there: takes no lock, lets SQLite follow no link, writes nothing beside it. A
/// database within another process's transaction counts as unreadable.
class PermissionAudit {
  public:
    struct Result {
        std::vector<PermissionGrant> grants; ///< sorted by title, user scope first among equal ones
        std::vector<PermissionGrant::Scope> unreadable;
        friend bool operator==(const Result&, const Result&) = default;
    };

    PermissionAudit(const FileSystem& files, const UserEnvironment& user, const Texts& texts)
        : files_(files), user_(user), texts_(texts) {}

    Result audit(const AppTarget& target) const { return audit(target.bundleID, target.bundleURL); }
    Result audit(const std::string& bundleID, const Path& bundle) const;

    static Path databasePath(PermissionGrant::Scope scope, const UserEnvironment& user);

  private:
    const FileSystem& files_;
    const UserEnvironment& user_;
    const Texts& texts_;
};

} // namespace tidwen
