#include "base/byte_count.h"

#include <algorithm>
#include <cmath>
#include <fmt/core.h>
#include <iterator>
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
    const auto formatted =
        icu::number::NumberFormatter::withLocale(icu::Locale::forLanguageTag(locale.c_str(), status))
            .unit(units[chosen].unit())
            .unitWidth(chosen == 0 ? UNUM_UNIT_WIDTH_FULL_NAME : UNUM_UNIT_WIDTH_SHORT)
            .precision(icu::number::Precision::maxFraction(units[chosen].decimals))
            .formatDouble(value, status)
            .toString(status);
    std::string text;
    if (U_FAILURE(status)) return fmt::format("{} B", bytes);
    return formatted.toUTF8String(text);
}

} // namespace tidwen
