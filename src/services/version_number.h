#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// "1.4.2" or "2.0-beta.1": one to four numbers, and for what comes before the finished version its stage.
struct VersionNumber {
    std::vector<std::uint32_t> numbers; ///< without zeros at the end, so that 1.2 is 1.2.0
    std::vector<std::string> stage;     ///< {"beta", "1"}; empty for a finished version

    bool isFinished() const { return stage.empty(); }

    /// Nothing for any other text.
    static std::optional<VersionNumber> parse(std::string_view text);

    friend bool operator==(const VersionNumber&, const VersionNumber&) = default;
};

/// Negative, zero or positive. Numbers count by their value; a stage comes before the finished version; in a
/// stage numbers count by their value and come before words ("beta.2" before "beta.10" before "beta.x").
int compare(const VersionNumber& a, const VersionNumber& b);

} // namespace tidwen
