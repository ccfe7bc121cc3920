#pragma once

#include <string>
#include <vector>

namespace tidwen {

/// A text that a person will read, as its key and what fills the key's placeholders in order
/// ("failure.exit %@" with {"64"}). `Texts` turns it into words; code compares the key.
struct Message {
    std::string key;
    std::vector<std::string> arguments = {};

    friend bool operator==(const Message&, const Message&) = default;
};

} // namespace tidwen
