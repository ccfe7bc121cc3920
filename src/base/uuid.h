#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// A random (version 4) identifier. Sixteen bytes, since lists hold hundreds of thousands of them.
class Uuid {
  public:
    /// From the system's random source; safe to call from any thread.
    static Uuid random();
    /// Nothing unless the text has the form of `string`; letter case is not looked at.
    static std::optional<Uuid> parse(std::string_view text);

    /// Capital letters: "E621E1F8-C36C-495A-93FC-0C247A3E6E5F".
    std::string string() const;

    friend bool operator==(const Uuid&, const Uuid&) = default;
    /// The order of their texts.
    friend auto operator<=>(const Uuid&, const Uuid&) = default;

  private:
    Uuid(std::uint64_t high, std::uint64_t low) : high_(high), low_(low) {}
    std::uint64_t high_, low_; ///< the first sixteen digits, and the others
};

} // namespace tidwen
