#pragma once

#include "base/text.h"

#include <string>

namespace tidwen {

/// The order of a set or map in which texts that differ in letter case alone are one key, in the spelling
/// that came first. Identifiers of applications are compared so wherever a user gives them.
struct AnyCase {
    bool operator()(const std::string& a, const std::string& b) const {
        return lowercased(a) < lowercased(b);
    }
};

} // namespace tidwen
