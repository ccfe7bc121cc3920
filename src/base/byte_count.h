#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

namespace tidwen {

/// "12.3 MB": decimal units, as the Finder counts, with the locale's decimal mark.
std::string formatByteCount(std::int64_t bytes, const std::string& locale = "en");

/// Formats many sizes: those that read the same share one text. Not for use from several threads at once.
class ByteCountTexts {
  public:
    explicit ByteCountTexts(std::string locale) : locale_(std::move(locale)) {}

    /// As `formatByteCount`. Stays where it is as long as this object.
    const std::string& text(std::int64_t bytes);

  private:
    std::string locale_;
    std::unordered_map<std::int64_t, std::string> texts_;
};

} // namespace tidwen
