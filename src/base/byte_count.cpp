#include "base/byte_count.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/core.h>
#include <iterator>
#include <map>
#include <unicode/measunit.h>
#include <unicode/numberformatter.h>

namespace tidwen {

namespace {

struct Unit {
    icu::MeasureUnit (*unit)();
    int decimals;
    std::int64_t halfDigit; ///< in bytes, half a unit of the last decimal
};

constexpr Unit units[] = {{icu::MeasureUnit::getByte, 0, 1},
                          {icu::MeasureUnit::getKilobyte, 0, 500},
                          {icu::MeasureUnit::getMegabyte, 1, 50'000},
                          {icu::MeasureUnit::getGigabyte, 2, 5'000'000},
                          {icu::MeasureUnit::getTerabyte, 2, 5'000'000'000},
                          {icu::MeasureUnit::getPetabyte, 2, 5'000'000'000'000}};

/// Creating a formatter costs far more than using it, and a list shows thousands of sizes.
const icu::number::LocalizedNumberFormatter& formatterFor(const std::string& locale, std::size_t unit) {
    using Formatters = std::array<icu::number::LocalizedNumberFormatter, std::size(units)>;
    thread_local std::map<std::string, Formatters> formatters;
    const auto found = formatters.find(locale);
    if (found != formatters.end()) return found->second[unit];
    UErrorCode status = U_ZERO_ERROR;
    const auto language = icu::Locale::forLanguageTag(locale.c_str(), status);
    auto& made = formatters[locale];
    for (std::size_t i = 0; i < made.size(); ++i)
        made[i] = icu::number::NumberFormatter::withLocale(language)
                      .unit(units[i].unit())
                      .unitWidth(i == 0 ? UNUM_UNIT_WIDTH_FULL_NAME : UNUM_UNIT_WIDTH_SHORT)
                      .precision(icu::number::Precision::maxFraction(units[i].decimals));
    return made[unit];
}

/// A key that is equal for sizes with the same text. Rounding changes only at multiples of half a unit of the
/// last decimal, so all sizes between two of them share a text; a multiple has its own key.
std::int64_t roundedKey(std::int64_t bytes) {
    std::size_t unit = 0;
    for (auto rest = bytes; rest >= 1000 && unit + 1 < std::size(units); rest /= 1000)
        ++unit;
    const auto halfDigit = units[unit].halfDigit;
    const bool isMultiple = bytes % halfDigit == 0;
    return (bytes / halfDigit * 2 + (isMultiple ? 0 : 1)) * static_cast<std::int64_t>(std::size(units))
           + static_cast<std::int64_t>(unit);
}

} // namespace

const std::string& ByteCountTexts::text(std::int64_t bytes) {
    bytes = std::max<std::int64_t>(bytes, 0);
    auto& known = texts_[roundedKey(bytes)];
    if (known.empty()) known = formatByteCount(bytes, locale_);
    return known;
}

std::string formatByteCount(std::int64_t bytes, const std::string& locale) {
    auto value = static_cast<double>(std::max<std::int64_t>(bytes, 0));
    std::size_t chosen = 0;
    // Uses the rounded value, because otherwise 999 950 bytes would read "1000 kB".
    while (chosen + 1 < std::size(units)) {
        const double step = std::pow(10.0, units[chosen].decimals);
        if (std::round(value * step) / step < 1000) break;
        value /= 1000;
        ++chosen;
    }

    UErrorCode status = U_ZERO_ERROR;
    const auto formatted = formatterFor(locale, chosen).formatDouble(value, status).toString(status);
    std::string text;
    if (U_FAILURE(status)) return fmt::format("{} B", bytes);
    return formatted.toUTF8String(text);
}

} // namespace tidwen
