#pragma once

#include "base/texts.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tidwen {

/// Sizes added up. Where a walk ended at its bound only a part was measured: a lower bound, as then is the
/// sum.
struct ByteSum {
    std::int64_t bytes = 0;
    bool isPartial = false;
    bool isKnown = false; ///< something was measured

    void add(std::optional<std::int64_t> size, bool isPart) {
        if (size) add({*size, isPart, true});
    }
    void add(const ByteSum& other) {
        bytes += other.bytes;
        isPartial |= other.isPartial;
        isKnown |= other.isKnown;
    }
    friend bool operator==(const ByteSum&, const ByteSum&) = default;
};

/// "3.9 MB"; "over 3.9 MB" when only a part was measured.
std::string sizeText(std::int64_t bytes, bool isPartial, const Texts& texts);
std::string sizeText(const ByteSum& sum, const Texts& texts);

} // namespace tidwen
