#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

namespace tidwen {

/// "12.3 MB": decimal units, as the Finder counts, with the locale's decimal mark.
std::string formatByteCount(std::int64_t bytes, const std::string& locale = "en");

/// Formats many sizes; sizes with the same text share one string. Not thread-safe.
class ByteCountTexts {
  public:
    explicit ByteCountTexts(std::string locale) : locale_(std::move(locale)) {}

    /// As `formatByteCount`. The reference is valid for the lifetime of this object.
    const std::string& text(std::int64_t bytes);

  private:
    std::string locale_;
    std::unordered_map<std::int64_t, std::string> texts_;
};

} // namespace tidwen
