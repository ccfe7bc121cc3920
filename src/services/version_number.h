#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// "1.4.2" or "2.0-beta.1": one to four numbers and, for a pre-release, its stage.
struct VersionNumber {
    std::vector<std::uint32_t> numbers; ///< without trailing zeros, so that 1.2 equals 1.2.0
    std::vector<std::string> stage;     ///< {"beta", "1"}; empty for a release

    bool isFinished() const { return stage.empty(); }

    /// nullopt for any other text.
    static std::optional<VersionNumber> parse(std::string_view text);

    friend bool operator==(const VersionNumber&, const VersionNumber&) = default;
};

/// Returns a negative number, zero or a positive number. Numbers compare by value; a pre-release comes before
/// its release; within a stage, numbers compare by value and come before words ("beta.2" before "beta.10"
/// before "beta.x").
int compare(const VersionNumber& a, const VersionNumber& b);

} // namespace tidwen
