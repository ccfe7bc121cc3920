#pragma once

#include "base/message.h"
#include "base/path.h"
#include "quarantine/history.h"

#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// The quarantine folder that a word means: the number of an entry, from 1, or the name or path of the
/// folder. An exact name wins, else one that a Mac's file systems treat as equal; several such matches are an
/// error. The error says why nothing was found. Numbers are refused when runs were not read, because they
/// could differ from those shown.
tl::expected<Path, Message> findRun(const PastRuns& runs, const std::string& word);

} // namespace tidwen
