#pragma once

#include "base/timestamp.h"
#include "quarantine/history.h"

#include <string>

namespace tidwen {

/// Under which heading a run is listed.
enum class HistoryGroup { today, yesterday, month };

/// By the days of the local calendar. A run dated in the future is listed under its month.
HistoryGroup groupOf(const RemovalHistoryEntry& entry, Timestamp now);

/// In what a search looks for a run: its applications and the old places of its items, in search form.
std::string searchText(const RemovalHistoryEntry& entry);

} // namespace tidwen
