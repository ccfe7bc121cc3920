#pragma once

#include <string>
#include <string_view>

namespace tidwen {

/// The text as one word for /bin/sh, in single quotes: it's → 'it'\''s'.
std::string shellWord(std::string_view text);

} // namespace tidwen
