#include "services/version_number.h"

#include <algorithm>
#include <charconv>

namespace tidwen {

namespace {

constexpr std::size_t maxLength = 64;
constexpr std::size_t maxNumbers = 4;
constexpr std::size_t maxDigits = 9; // fits in 32 bits

bool isDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

bool isWord(std::string_view text) {
    return !text.empty()
           && text.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-")
                  == text.npos;
}

std::optional<std::uint32_t> number(std::string_view text) {
    if (!isDigits(text) || text.size() > maxDigits) return std::nullopt;
    std::uint32_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

std::vector<std::string_view> pieces(std::string_view text) {
    std::vector<std::string_view> result;
    for (;;) {
        const auto point = text.find('.');
        result.push_back(text.substr(0, point));
        if (point == text.npos) return result;
        text.remove_prefix(point + 1);
    }
}

template<class T>
int order(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

int compareStagePieces(const std::string& a, const std::string& b) {
    const auto numberA = number(a);
    const auto numberB = number(b);
    if (numberA && numberB) return order(*numberA, *numberB);
    if (numberA || numberB) return numberA ? -1 : 1;
    return order(a, b);
}

} // namespace

std::optional<VersionNumber> VersionNumber::parse(std::string_view text) {
    if (text.size() > maxLength) return std::nullopt;
    VersionNumber result;
    const auto dash = text.find('-');
    for (const auto piece : pieces(text.substr(0, dash))) {
        const auto value = number(piece);
        if (!value || result.numbers.size() == maxNumbers) return std::nullopt;
        result.numbers.push_back(*value);
    }
    while (!result.numbers.empty() && result.numbers.back() == 0)
        result.numbers.pop_back();
    if (dash == text.npos) return result;
    for (const auto piece : pieces(text.substr(dash + 1))) {
        if (!isWord(piece)) return std::nullopt;
        result.stage.emplace_back(piece);
    }
    return result;
}

int compare(const VersionNumber& a, const VersionNumber& b) {
    // Without trailing zeros, of two with a common beginning the shorter one is smaller.
    if (a.numbers != b.numbers) return order(a.numbers, b.numbers);
    if (a.isFinished() || b.isFinished()) return order(a.isFinished(), b.isFinished());
    for (std::size_t i = 0; i < std::min(a.stage.size(), b.stage.size()); ++i)
        if (const int result = compareStagePieces(a.stage[i], b.stage[i]); result != 0) return result;
    return order(a.stage.size(), b.stage.size());
}

} // namespace tidwen
