#include "base/language.h"

#include <algorithm>
#include <fmt/core.h>
#include <functional>
#include <map>
#include <memory>
#include <unicode/datefmt.h>
#include <unicode/listformatter.h>
#include <unicode/localematcher.h>
#include <unicode/locdspnm.h>
#include <unicode/numberformatter.h>
#include <unicode/plurrule.h>
#include <utility>

namespace tidwen {

namespace {

icu::Locale localeOf(const std::string& language) {
    UErrorCode status = U_ZERO_ERROR;
    auto locale = icu::Locale::forLanguageTag(language.c_str(), status);
    return U_FAILURE(status) ? icu::Locale::getRoot() : locale;
}

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    return text.toUTF8String(result);
}

/// What `make` creates for a language: creating costs far more than using, and a list shows thousands of
/// rows. Null where ICU has no data.
template<class Made, class Make>
const Made* madeFor(const std::string& language, const Make& make) {
    thread_local std::map<std::string, std::unique_ptr<Made>> known;
    const auto found = known.find(language);
    if (found != known.end()) return found->second.get();
    return known.emplace(language, make(localeOf(language))).first->second.get();
}

} // namespace

std::string languageTitle(const std::string& language) {
    UDisplayContext contexts[] = {UDISPCTX_DIALECT_NAMES, UDISPCTX_CAPITALIZATION_FOR_UI_LIST_OR_MENU};
    const auto locale = localeOf(language);
    const std::unique_ptr<icu::LocaleDisplayNames> names(
        icu::LocaleDisplayNames::createInstance(locale, contexts, std::size(contexts)));
    icu::UnicodeString title;
    return names ? utf8(names->localeDisplayName(locale, title)) : language;
}

std::optional<std::string> closestLanguage(const std::vector<std::string>& wished,
                                           const std::vector<std::string>& available) {
    // The data for comparing languages take long to load, and most often there is nothing to compare.
    const auto first = std::find_if_not(wished.begin(), wished.end(), std::mem_fn(&std::string::empty));
    if (first == wished.end()) return std::nullopt;
    if (std::find(available.begin(), available.end(), *first) != available.end()) return *first;

    UErrorCode status = U_ZERO_ERROR;
    icu::LocaleMatcher::Builder builder;
    for (const auto& language : available)
        builder.addSupportedLocale(localeOf(language));
    builder.setNoDefaultLocale();
    const auto matcher = builder.build(status);
    for (const auto& language : wished) {
        if (U_FAILURE(status) || language.empty()) continue;
        const auto found = matcher.getBestMatchResult(localeOf(language), status).getSupportedIndex();
        if (U_SUCCESS(status) && found >= 0) return available[static_cast<std::size_t>(found)];
    }
    return std::nullopt;
}

bool isRightToLeft(const std::string& language) {
    return localeOf(language).isRightToLeft() != 0;
}

std::string formatNumber(std::int64_t number, const std::string& language) {
    using Formatter = icu::number::LocalizedNumberFormatter;
    const auto* formatter = madeFor<Formatter>(language, [](const icu::Locale& locale) {
        return std::make_unique<Formatter>(icu::number::NumberFormatter::withLocale(locale));
    });
    UErrorCode status = U_ZERO_ERROR;
    const auto text = formatter->formatInt(number, status).toString(status);
    return U_FAILURE(status) ? std::to_string(number) : utf8(text);
}

namespace {

enum class DateForm { dateAndTime, day, month, time };

/// A type of its own for each form, because what was made is known by its type.
template<DateForm form>
struct MadeDateFormat {
    std::unique_ptr<icu::DateFormat> format;
};

template<DateForm form, class Make>
std::string formatted(Timestamp moment, const std::string& language, const Make& make) {
    using Made = MadeDateFormat<form>;
    const auto* made = madeFor<Made>(language, [&](const icu::Locale& locale) {
        return std::make_unique<Made>(Made{std::unique_ptr<icu::DateFormat>(make(locale))});
    });
    if (!made->format) return displayDate(moment);
    constexpr double milliseconds = 1000;
    icu::UnicodeString text;
    return utf8(
        made->format->format(static_cast<double>(moment.time_since_epoch().count()) * milliseconds, text));
}

} // namespace

std::string formatDate(Timestamp moment, const std::string& language) {
    return formatted<DateForm::dateAndTime>(moment, language, [](const icu::Locale& locale) {
        return icu::DateFormat::createDateTimeInstance(icu::DateFormat::kMedium, icu::DateFormat::kShort,
                                                       locale);
    });
}

std::string formatDay(Timestamp moment, const std::string& language) {
    return formatted<DateForm::day>(moment, language, [](const icu::Locale& locale) {
        return icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, locale);
    });
}

std::string formatMonth(Timestamp moment, const std::string& language) {
    return formatted<DateForm::month>(moment, language, [](const icu::Locale& locale) {
        UErrorCode status = U_ZERO_ERROR;
        return icu::DateFormat::createInstanceForSkeleton(icu::UnicodeString("yMMMM"), locale, status);
    });
}

std::string formatTime(Timestamp moment, const std::string& language) {
    return formatted<DateForm::time>(moment, language, [](const icu::Locale& locale) {
        return icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, locale);
    });
}

std::string formatList(const std::vector<std::string>& items, const std::string& language) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::ListFormatter> format(
        icu::ListFormatter::createInstance(localeOf(language), status));
    std::vector<icu::UnicodeString> texts;
    texts.reserve(items.size());
    for (const auto& item : items)
        texts.push_back(icu::UnicodeString::fromUTF8(item));
    icu::UnicodeString list;
    if (format) format->format(texts.data(), static_cast<std::int32_t>(texts.size()), list, status);
    if (format && U_SUCCESS(status)) return utf8(list);
    std::string plain;
    for (const auto& item : items)
        plain += (plain.empty() ? "" : ", ") + item;
    return plain;
}

std::string pluralCategory(std::int64_t number, const std::string& language) {
    const auto* rules = madeFor<icu::PluralRules>(language, [](const icu::Locale& locale) {
        UErrorCode status = U_ZERO_ERROR;
        return std::unique_ptr<icu::PluralRules>(icu::PluralRules::forLocale(locale, status));
    });
    return rules ? utf8(rules->select(static_cast<double>(number))) : "other";
}

} // namespace tidwen
