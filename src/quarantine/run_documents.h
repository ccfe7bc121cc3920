#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "quarantine/manifest.h"

namespace tidwen {

/// Writes the journal into its quarantine folder, with a file that reserves the disk space of the manifest:
/// otherwise a disk filled by the moves would leave the run without one. After an error neither exists.
FileResult<void> beginRun(const RemovalJournal& journal, FileSystem& files);

/// Writes the manifest into its quarantine folder, using the reserved space if the disk is full, and removes
/// the journal. After an error the journal still exists.
FileResult<void> finishRun(const Manifest& manifest, FileSystem& files);

/// Removes unfinished documents that a kill left in `root`, and the reserved space once no journal needs a
/// manifest.
void dropUnfinishedDocuments(const Path& root, FileSystem& files);

/// Removes the quarantine folder `root` if it contains nothing but such leftovers: of a kill before its
/// journal was written, or at the end of a purge. Only if it has the name of a run. True when it is gone.
bool dropEmptyRun(const Path& root, FileSystem& files);

} // namespace tidwen
