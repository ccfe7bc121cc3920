#pragma once

#include "base/timestamp.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

// How a language writes what no translation can hold. `language` is a tag such as "pt-BR"; an unknown one
// gives the forms of the root locale.

/// The language in its own words, as a menu lists it: "Deutsch", "Português (Brasil)".
std::string languageTitle(const std::string& language);

/// The one of `available` that serves best whoever wishes for these, the most wished first ("pt-PT" is
/// content with "pt-BR", "zh-TW" with "zh-Hans"); nullopt when none does.
std::optional<std::string> closestLanguage(const std::vector<std::string>& wished,
                                           const std::vector<std::string>& available);

bool isRightToLeft(const std::string& language);

/// "12,345", "12.345".
std::string formatNumber(std::int64_t number, const std::string& language);

/// "14.11.2026, 17:26" in the local time zone.
std::string formatDate(Timestamp moment, const std::string& language);

/// "14.11.2026", "Nov 14, 2026".
std::string formatDay(Timestamp moment, const std::string& language);

/// "November 2026", "2026年11月".
std::string formatMonth(Timestamp moment, const std::string& language);

/// "17:26", "5:26 PM".
std::string formatTime(Timestamp moment, const std::string& language);

/// "Kip, Lumen and Pantry", "Kip、Lumen、Pantry".
std::string formatList(const std::vector<std::string>& items, const std::string& language);

/// "one", "few", … "other" by the plural rules of the language.
std::string pluralCategory(std::int64_t number, const std::string& language);

} // namespace tidwen
