#pragma once

#include "platform/file_system.h"
#include "quarantine/history.h"

#include <map>
#include <string>
#include <vector>

namespace tidwen {

/// Names of applications by identifier, in lower case.
using FormerNames = std::map<std::string, std::string>;

/// What past removals say of the applications whose items they took: the records of the runs in the user's
/// Trash, and the launchd jobs there. Taking the find that named an application thus hides nothing else of
/// it.
FormerNames formerNames(const FileSystem& files, const std::vector<RemovalHistoryEntry>& runs);

/// The name recorded for this identifier or for one that continues it; empty without any.
std::string formerName(const FormerNames& names, const std::string& identifier);

} // namespace tidwen
