#pragma once

#include "sample/sample_contents.h"

#include <string>
#include <vector>

namespace tidwen::sample {

/// The bytes of a privacy database ("TCC.db") with the tables of macOS 14 and the rows of one scope. Empty
/// when SQLite refuses.
std::string writePrivacyDatabase(const std::vector<Grant>& grants, bool isSystemScope);

} // namespace tidwen::sample
