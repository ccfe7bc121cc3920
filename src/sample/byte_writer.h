#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace tidwen {

/// Appends numbers in the byte order of a file format.
class ByteWriter {
  public:
    ByteWriter& byte(std::uint8_t value) { return big(value, 1); }
    ByteWriter& big16(std::uint16_t value) { return big(value, 2); }
    ByteWriter& big32(std::uint64_t value) { return big(value, 4); }
    ByteWriter& big64(std::uint64_t value) { return big(value, 8); }
    ByteWriter& little32(std::uint64_t value) {
        for (int shift = 0; shift < 32; shift += 8)
            bytes_.push_back(static_cast<char>(value >> shift));
        return *this;
    }
    ByteWriter& text(std::string_view value) {
        bytes_.append(value);
        return *this;
    }
    /// The text and a NUL byte.
    ByteWriter& terminated(std::string_view value) { return text(value).byte(0); }
    /// Appends zero bytes until the total is `size` bytes.
    ByteWriter& padTo(std::size_t size) {
        if (bytes_.size() < size) bytes_.resize(size, '\0');
        return *this;
    }

    std::size_t size() const { return bytes_.size(); }
    std::string take() { return std::move(bytes_); }

  private:
    ByteWriter& big(std::uint64_t value, int width) {
        for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
            bytes_.push_back(static_cast<char>(value >> shift));
        return *this;
    }

    std::string bytes_;
};

} // namespace tidwen
