#include "base/base64.h"

#include <cstddef>
#include <cstdint>

namespace tidwen {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// 0 to 63, or -1.
int digitValue(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    return c == '+' ? 62 : c == '/' ? 63 : -1;
}

} // namespace

std::string encodeBase64(std::string_view bytes) {
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        const auto digits = bytes.size() - i < 3 ? bytes.size() - i + 1 : 4;
        for (std::size_t k = 0; k < 4; ++k)
            out += k < digits ? alphabet[group >> (18 - 6 * k) & 63] : '=';
    }
    return out;
}

std::optional<std::string> decodeBase64(std::string_view text) {
    std::string out;
    std::uint32_t group = 0;
    std::size_t characters = 0;
    std::size_t padding = 0;
    for (const char c : text) {
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
        const int value = digitValue(c);
        padding += c == '=' ? 1 : 0;
        if ((value < 0 && c != '=') || (value >= 0 && padding > 0)) return std::nullopt;
        group = group << 6 | static_cast<std::uint32_t>(value < 0 ? 0 : value);
        if (++characters % 4 != 0) continue;
        for (int shift = 16; shift >= 0; shift -= 8)
            out += static_cast<char>(group >> shift & 0xFF);
        group = 0;
    }
    if (characters % 4 != 0 || padding > 2) return std::nullopt;
    out.resize(out.size() - padding);
    return out;
}

} // namespace tidwen
