#pragma once

#include "quarantine/manifest.h"

namespace tidwen {

/// Writes the journal into its quarantine folder, and beside it a file that holds the disk space which the
/// manifest will need: a disk that the moves fill up would else leave the run without one. After an error
/// neither is there.
FileResult<void> beginRun(const RemovalJournal& journal, FileSystem& files);

/// Writes the manifest into its quarantine folder, on a full disk in the space that was held for it, and
/// drops the journal. After an error the journal is still there.
FileResult<void> finishRun(const Manifest& manifest, FileSystem& files);

/// Takes away what a kill left half written of the documents of the run in `root`, and the space that was
/// held for a manifest once no journal waits for one.
void dropUnfinishedDocuments(const Path& root, FileSystem& files);

/// Takes away the quarantine folder `root` when nothing lies in it but such rests: a kill between the
/// creation of the folder and its journal leaves it, or a purge that was cut off at its end. Only when it has
/// the name of a run. True when it is gone.
bool dropEmptyRun(const Path& root, FileSystem& files);

} // namespace tidwen
