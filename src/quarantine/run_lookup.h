#pragma once

#include "base/message.h"
#include "quarantine/history.h"

#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// The quarantine folder of the run that a word means: its number among the entries, from 1, or the name or
/// path of the folder. The exact name wins; else the one that is the same to a Mac's disks, and when there
/// are several of these the word means none. Gives the reason when it means none. Numbers count the runs that
/// were read: with some left out they could mean other runs than were shown.
tl::expected<Path, Message> findRun(const PastRuns& runs, const std::string& word);

} // namespace tidwen
