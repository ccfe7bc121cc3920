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
};

constexpr Unit units[] = {{icu::MeasureUnit::getByte, 0},     {icu::MeasureUnit::getKilobyte, 0},
                          {icu::MeasureUnit::getMegabyte, 1}, {icu::MeasureUnit::getGigabyte, 2},
                          {icu::MeasureUnit::getTerabyte, 2}, {icu::MeasureUnit::getPetabyte, 2}};

/// Making one costs far more than using it, and a list shows thousands of sizes.
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

} // namespace

std::string formatByteCount(std::int64_t bytes, const std::string& locale) {
    auto value = static_cast<double>(std::max<std::int64_t>(bytes, 0));
    std::size_t chosen = 0;
    // By the rounded value, or 999 950 bytes would read "1000 kB".
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
