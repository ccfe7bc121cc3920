#pragma once

#include "base/parallel.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// An immutable list of texts in one block of memory, for fast iteration and comparison.
class TextList {
  public:
    TextList() = default;

    /// `make(0 … count-1)` returns the texts; it is called from several threads and must not throw.
    template<class Make>
    TextList(std::size_t count, Make make) : ends_(count) {
        constexpr std::size_t partSize = 4096;
        std::vector<std::string> parts((count + partSize - 1) / partSize);
        parallelFor(parts.size(), [&](std::size_t part) {
            const auto end = std::min(count, (part + 1) * partSize);
            for (auto i = part * partSize; i < end; ++i) {
                parts[part] += make(i);
                ends_[i] = parts[part].size();
            }
        });
        std::size_t before = 0;
        for (std::size_t part = 0; part < parts.size(); ++part) {
            const auto end = std::min(count, (part + 1) * partSize);
            for (auto i = part * partSize; i < end; ++i)
                ends_[i] += before;
            before += parts[part].size();
        }
        text_.reserve(before);
        for (const auto& part : parts)
            text_ += part;
    }

    std::string_view operator[](std::size_t i) const {
        const auto start = i > 0 ? ends_[i - 1] : 0;
        return std::string_view(text_).substr(start, ends_[i] - start);
    }

  private:
    std::string text_;
    std::vector<std::size_t> ends_; ///< end offsets in `text_`
};

} // namespace tidwen
