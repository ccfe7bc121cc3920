#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// A set of identifiers that answers which of them a text starts with, in time that hardly grows with their
/// number. Compares bytes: lower-case what goes in and what is asked. Immutable.
class IdentifierIndex {
  public:
    IdentifierIndex() : IdentifierIndex(std::vector<std::string>{}) {}
    /// Repeated and empty identifiers do not count.
    explicit IdentifierIndex(std::vector<std::string> identifiers);

    /// The text begins with one of them, wherever it goes on.
    bool startsAny(std::string_view text) const;

    /// Length of the longest one that the text equals or continues with "."; 0 when there is none.
    std::size_t longestContinued(std::string_view text) const;

    bool contains(std::string_view text) const;

  private:
    // The identifiers that no other one begins. A text can begin with only one of these, the last one not
    // after it in the alphabet; it is looked for among those that share a hash of the first eight bytes,
    // which are none at all for nearly every text that begins with no identifier.
    static constexpr std::size_t slotCount = 2048;
    static std::size_t slotOf(std::string_view text);
    std::vector<std::string> beginnings_;                 ///< sorted by slot, then by the alphabet
    std::array<std::uint32_t, slotCount + 1> slots_ = {}; ///< where each slot's begin in `beginnings_`
    std::vector<std::string> shortBeginnings_;            ///< shorter than eight bytes, sorted

    std::vector<std::string> all_; ///< sorted
};

} // namespace tidwen
