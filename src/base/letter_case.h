#pragma once

#include "base/text.h"

#include <string>

namespace tidwen {

/// Orders texts without regard to letter case: in a set or map, spellings that differ only in case are one
/// key, and the first one is kept. Identifiers of applications are compared like this wherever a user enters
/// them.
struct AnyCase {
    bool operator()(const std::string& a, const std::string& b) const {
        return lowercased(a) < lowercased(b);
    }
};

} // namespace tidwen
