#include "base/language.h"
#include "base/timestamp.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

TEST(Language, WritesAsItsReadersDo) {
    setenv("TZ", "UTC", 1); // NOLINT(concurrency-mt-unsafe)
    struct {
        const char *tag, *title, *number, *date, *month, *list, *two;
    } const cases[] = {
        {"de", "Deutsch", "12.345", "14.11.2026, 17:26", "November 2026", "A, B und C", "other"},
        {"fr", "Français", "12\u202F345", "14 nov. 2026, 17:26", "novembre 2026", "A, B et C", "other"},
        {"pt-BR", "Português (Brasil)", "12.345", "14 de nov. de 2026, 17:26", "novembro de 2026", "A, B e C",
         "other"},
        {"ja", "日本語", "12,345", "2026/11/14 17:26", "2026年11月", "A、B、C", "other"},
        {"zh-Hans", "简体中文", "12,345", "2026年11月14日 17:26", "2026年11月", "A、B和C", "other"},
        {"pl", "polski", "12\u00A0345", "14 lis 2026, 17:26", "listopad 2026", "A, B i C", "few"},
    };
    for (const auto& [tag, title, number, date, month, list, two] : cases) {
        EXPECT_EQ(languageTitle(tag), title);
        EXPECT_EQ(formatNumber(12'345, tag), number);
        const auto moment = *parseIso8601("2026-11-14T17:26:00Z");
        EXPECT_EQ(formatDate(moment, tag), date);
        EXPECT_TRUE(std::string(date).starts_with(formatDay(moment, tag)));
        EXPECT_TRUE(std::string(date).ends_with(formatTime(moment, tag)));
        EXPECT_EQ(formatMonth(moment, tag), month);
        EXPECT_EQ(formatList({"A", "B", "C"}, tag), list);
        EXPECT_EQ(pluralCategory(2, tag), two);
        EXPECT_FALSE(isRightToLeft(tag));
    }
    EXPECT_TRUE(isRightToLeft("ar") && isRightToLeft("he"));
    EXPECT_EQ(formatNumber(5, "no language"), "5");
}

TEST(Language, IsTheClosestOfThoseAvailable) {
    const std::vector<std::string> available = {"de", "en", "pt-BR", "zh-Hans"};
    const std::pair<std::vector<std::string>, std::optional<std::string>> cases[] = {
        {{"de-AT"}, "de"},
        {{"pt-PT"}, "pt-BR"},
        {{"zh-CN"}, "zh-Hans"},
        {{"zh"}, "zh-Hans"},
        {{"ja", "de"}, "de"},
        {{"ja"}, {}},
        {{""}, {}},
        {{"../../etc"}, {}},
        {{"en-GB", "de"}, {"en"}},
        {{}, {}},
    };
    for (const auto& [wished, expected] : cases)
        EXPECT_EQ(closestLanguage(wished, available), expected) << testing::PrintToString(wished);
}

} // namespace
} // namespace tidwen
