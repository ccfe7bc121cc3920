#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tidwen {

/// Bounds-checked reads of numbers and texts from untrusted bytes; any read past the end returns nullopt.
/// Offsets count from the first byte.
class ByteReader {
  public:
    explicit ByteReader(std::string_view bytes) : bytes_(bytes) {}

    std::size_t size() const { return bytes_.size(); }

    std::optional<std::string_view> slice(std::uint64_t offset, std::uint64_t length) const {
        if (offset > bytes_.size() || length > bytes_.size() - offset) return std::nullopt;
        return bytes_.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(length));
    }
    /// The text from `offset` to the next NUL; nullopt when none follows within `maxLength` bytes.
    std::optional<std::string_view> terminated(std::uint64_t offset, std::size_t maxLength) const {
        if (offset >= bytes_.size()) return std::nullopt;
        const auto rest = bytes_.substr(static_cast<std::size_t>(offset), maxLength + 1);
        const auto end = rest.find('\0');
        if (end == rest.npos) return std::nullopt;
        return rest.substr(0, end);
    }
    std::optional<std::uint8_t> byte(std::uint64_t offset) const { return big<std::uint8_t>(offset); }
    std::optional<std::uint16_t> big16(std::uint64_t offset) const { return big<std::uint16_t>(offset); }
    std::optional<std::uint32_t> big32(std::uint64_t offset) const { return big<std::uint32_t>(offset); }
    std::optional<std::uint64_t> big64(std::uint64_t offset) const { return big<std::uint64_t>(offset); }
    std::optional<std::uint32_t> little32(std::uint64_t offset) const {
        const auto value = big32(offset);
        if (!value) return std::nullopt;
        return *value >> 24 | (*value >> 8 & 0xff00) | (*value << 8 & 0xff0000) | *value << 24;
    }

  private:
    template<class Number>
    std::optional<Number> big(std::uint64_t offset) const {
        const auto bytes = slice(offset, sizeof(Number));
        if (!bytes) return std::nullopt;
        std::uint64_t value = 0;
        for (const char c : *bytes)
            value = value << 8 | static_cast<unsigned char>(c);
        return static_cast<Number>(value);
    }

    std::string_view bytes_;
};

} // namespace tidwen
