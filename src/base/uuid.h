#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// A random (version 4) UUID. Sixteen bytes, because lists hold hundreds of thousands of them.
class Uuid {
  public:
    /// From the system's random source; thread-safe.
    static Uuid random();
    /// Parses the form of `string` without regard to letter case; nullopt for anything else.
    static std::optional<Uuid> parse(std::string_view text);

    /// Upper case: "E621E1F8-C36C-495A-93FC-0C247A3E6E5F".
    std::string string() const;

    friend bool operator==(const Uuid&, const Uuid&) = default;
    /// The same order as that of their texts.
    friend auto operator<=>(const Uuid&, const Uuid&) = default;

  private:
    Uuid(std::uint64_t high, std::uint64_t low) : high_(high), low_(low) {}
    std::uint64_t high_, low_; ///< the first sixteen hex digits, then the other sixteen
};

} // namespace tidwen
