#include "base/uuid.h"

#include <fmt/core.h>
#include <random>

namespace tidwen {

namespace {

bool isHyphenPlace(std::size_t at) {
    return at == 8 || at == 13 || at == 18 || at == 23;
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

char upper(char c) {
    return c >= 'a' && c <= 'f' ? static_cast<char>(c - ('a' - 'A')) : c;
}

} // namespace

Uuid Uuid::random() {
    std::random_device source;
    const std::uint32_t a = source(), b = source(), c = source(), d = source();
    // The version (4) and the variant (binary 10) stand at fixed places.
    return Uuid(fmt::format("{:08X}-{:04X}-{:04X}-{:04X}-{:04X}{:08X}", a, b >> 16, (b & 0x0FFF) | 0x4000,
                            ((c >> 16) & 0x3FFF) | 0x8000, c & 0xFFFF, d));
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    std::string capital;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isHyphenPlace(i) ? text[i] != '-' : !isHexDigit(text[i])) return std::nullopt;
        capital += upper(text[i]);
    }
    return Uuid(std::move(capital));
}

} // namespace tidwen
