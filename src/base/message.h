#pragma once

#include <string>
#include <vector>

namespace tidwen {

/// A text for people: its key and the values of the key's placeholders in order ("failure.exit %@" with
/// {"64"}). `Texts` translates it; code compares the key.
struct Message {
    std::string key;
    std::vector<std::string> arguments = {};

    friend bool operator==(const Message&, const Message&) = default;
};

} // namespace tidwen
