#include "base/uuid.h"

#include <fmt/core.h>
#include <random>
#include <sys/random.h>

namespace tidwen {

namespace {

bool isHyphenPlace(std::size_t at) {
    return at == 8 || at == 13 || at == 18 || at == 23;
}

std::optional<unsigned> hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return std::nullopt;
}

} // namespace

Uuid Uuid::random() {
    // Called directly: the library's own source may execute a slow processor instruction per number, which
    // costs a sweep seconds.
    std::uint64_t words[2];
    if (::getentropy(words, sizeof words) != 0) {
        std::random_device source;
        for (auto& word : words)
            word = std::uint64_t{source()} << 32 | source();
    }
    // The version (4) and the variant (binary 10) have fixed positions.
    constexpr std::uint64_t version = 0xF000, variant = 0xC000'0000'0000'0000;
    return Uuid((words[0] & ~version) | 0x4000, (words[1] & ~variant) | 0x8000'0000'0000'0000);
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    std::uint64_t high = 0, low = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isHyphenPlace(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const auto digit = hexDigit(text[i]);
        if (!digit) return std::nullopt;
        auto& half = i < 18 ? high : low; // position 18 is the hyphen between the halves
        half = half << 4 | *digit;
    }
    return Uuid(high, low);
}

std::string Uuid::string() const {
    return fmt::format("{:08X}-{:04X}-{:04X}-{:04X}-{:012X}", high_ >> 32, high_ >> 16 & 0xFFFF,
                       high_ & 0xFFFF, low_ >> 48, low_ & 0xFFFF'FFFF'FFFF);
}

} // namespace tidwen
