#pragma once

#include "posix/bulk_entries.h"

#include <functional>
#include <sys/stat.h>

namespace tidwen {

/// Gets each entry of a folder, null when it could not be described; returns false to end the listing.
using TakeEntry = std::function<bool(const char* name, const EntrySize* size)>;

EntrySize entrySize(const struct stat& item);

/// Lists an open folder from its start, links themselves. On a Mac many entries are described by one call,
/// elsewhere one call describes each; the answers are the same. A fault ends the listing.
void listSizes(int folder, const TakeEntry& take);

/// The same, one call for each entry on every system.
void listSizesSingly(int folder, const TakeEntry& take);

} // namespace tidwen
