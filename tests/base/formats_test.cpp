#include "base/base64.h"
#include "base/byte_count.h"
#include "base/timestamp.h"
#include "base/uuid.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace tidwen {
namespace {

Timestamp at(std::int64_t sinceEpoch) {
    return Timestamp(std::chrono::seconds(sinceEpoch));
}

TEST(Timestamp, ReadsWhatItWrites) {
    const std::pair<std::int64_t, const char*> cases[] = {
        {0, "1970-01-01T00:00:00Z"},         {1794677160, "2026-11-14T17:26:00Z"},
        {951782399, "2000-02-28T23:59:59Z"}, {951782400, "2000-02-29T00:00:00Z"},
        {-1, "1969-12-31T23:59:59Z"},        {4102444800, "2100-01-01T00:00:00Z"},
    };
    for (const auto& [moment, text] : cases) {
        EXPECT_EQ(iso8601(at(moment)), text);
        EXPECT_EQ(parseIso8601(text), at(moment));
    }
    EXPECT_EQ(parseIso8601("1970-01-01T01:30:00+01:30"), at(0));
    EXPECT_EQ(parseIso8601("1969-12-31T19:00:00-05:00"), at(0));
}

TEST(Timestamp, RefusesWhatIsNoDate) {
    for (const auto* text : {"", "1970-01-01", "1970-01-01T00:00:00", "1970-13-01T00:00:00Z",
                             "2001-02-29T00:00:00Z", "1970-01-01T24:00:00Z", "1970-01-01T00:60:00Z",
                             "1970-01-01T00:00:60Z", "1970-1-01T00:00:00Z", "1970-01-01 00:00:00Z",
                             "1970-01-01T00:00:00Zx", "1970-01-01T00:00:00+1:00", "1970-01-01T00:00:00+24:00",
                             "1970-01-01T00:00:00.5Z", "+970-01-01T00:00:00Z", "1970-01-01T00:00:00+01:0"})
        EXPECT_FALSE(parseIso8601(text)) << text;
}

TEST(Timestamp, ShowsTheLocalTimeZone) {
    const char* before = std::getenv("TZ");
    const std::string saved = before ? before : "";
    setenv("TZ", "XYZ-2", 1); // two hours east
    EXPECT_EQ(folderStamp(at(1794677160)), "2026-11-14 19-26-00");
    EXPECT_EQ(displayDate(at(1794677160)), "2026-11-14 19:26");
    before ? setenv("TZ", saved.c_str(), 1) : unsetenv("TZ");
}

TEST(Uuid, HasVersionAndVariantAndIsNew) {
    for (int i = 0; i < 50; ++i) {
        const auto uuid = Uuid::random();
        EXPECT_EQ(Uuid::parse(uuid.string()), uuid);
        EXPECT_EQ(uuid.string()[14], '4');
        EXPECT_NE(std::string("89AB").find(uuid.string()[19]), std::string::npos);
        EXPECT_NE(Uuid::random(), uuid);
    }
}

TEST(Uuid, ReadsOnlyTheFullForm) {
    EXPECT_EQ(Uuid::parse("e621e1f8-c36c-495a-93fc-0c247a3e6e5f")->string(),
              "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
    for (const auto* text : {"", "E621E1F8C36C495A93FC0C247A3E6E5F", "E621E1F8-C36C-495A-93FC-0C247A3E6E5",
                             "E621E1F8-C36C-495A-93FC-0C247A3E6E5G", "E621E1F8-C36C-495A-93FC-0C247A3E6E5F0",
                             "E621E1F8-C36C-495A-93FC/0C247A3E6E5F", "{621E1F8-C36C-495A-93FC-0C247A3E6E5F"})
        EXPECT_FALSE(Uuid::parse(text)) << text;
}

TEST(ByteCount, CountsAsTheFinderDoes) {
    const std::pair<std::int64_t, const char*> cases[] = {
        {-5, "0 bytes"},
        {1, "1 byte"},
        {999, "999 bytes"},
        {999'499, "999 kB"},
        {999'500, "1 MB"},
        {12'345'678, "12.3 MB"},
        {999'950'000, "1 GB"},
        {1'234'000'000, "1.23 GB"},
        {INT64_MAX, "9,223.37 PB"},
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(formatByteCount(bytes), text);
    ByteCountTexts texts("en");
    for (const std::int64_t step : {1L, 99L, 500L, 50'000L, 5'000'000L, 5'000'000'000L})
        for (std::int64_t bytes = step; bytes < step * 300; bytes += step)
            for (const auto each : {bytes - 1, bytes, bytes + 1})
                ASSERT_EQ(texts.text(each), formatByteCount(each)) << each;
    EXPECT_EQ(formatByteCount(12'345'678, "de"), "12,3 MB");
}

TEST(Base64, ReadsWhatItWrites) {
    const std::pair<std::string, const char*> cases[] = {
        {"", ""},        {"f", "Zg=="},          {"fo", "Zm8="},
        {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}, {"\xFB\xFF\xFE", "+//+"},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(encodeBase64(bytes), text);
        EXPECT_EQ(decodeBase64(text), bytes);
    }
    EXPECT_EQ(decodeBase64(" Z m\n9\tv "), "foo");
    for (const auto* text : {"Z", "Zg", "Zg=", "Zg=a", "Z===", "====", "Zm9v!", "Zg==Zg=="})
        EXPECT_FALSE(decodeBase64(text)) << text;
}

} // namespace
} // namespace tidwen
