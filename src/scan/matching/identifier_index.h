#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// A set of identifiers that finds those a text starts with, in time nearly independent of their number.
/// Compares bytes: use lower case for both. Immutable.
class IdentifierIndex {
  public:
    IdentifierIndex() : IdentifierIndex(std::vector<std::string>{}) {}
    /// Ignores duplicate and empty identifiers.
    explicit IdentifierIndex(std::vector<std::string> identifiers);

    /// Whether the text begins with one of them, whatever follows it.
    bool startsAny(std::string_view text) const;

    /// Length of the longest one that the text equals or continues with "."; 0 when there is none.
    std::size_t longestContinued(std::string_view text) const;

    bool contains(std::string_view text) const;

  private:
    // The identifiers that do not begin with another one. A text can begin with at most one of them, the last
    // that is not greater than it; it is searched among those with the same hash of the first eight bytes,
    // which are none for nearly every text that begins with no identifier.
    static constexpr std::size_t slotCount = 2048;
    static std::size_t slotOf(std::string_view text);
    std::vector<std::string> beginnings_; ///< sorted by slot, then by bytes
    std::array<std::uint32_t, slotCount + 1> slots_ =
        {};                                    ///< index of each slot's first entry in `beginnings_`
    std::vector<std::string> shortBeginnings_; ///< shorter than eight bytes, sorted

    std::vector<std::string> all_; ///< sorted
};

} // namespace tidwen
