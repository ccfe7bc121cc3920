#include "base/json.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

namespace tidwen {
namespace {

using nlohmann::json;

TEST(Json, WritesTheHouseForm) {
    const json value = {{"b", {1, -2, true, nullptr}},
                        {"a", {{"path", "/Library/\"x\"\\"}, {"empty", json::object()}}},
                        {"none", json::array()},
                        {"odd", "tab\t\x01\x7F\xC2\x9B\u202E\u2029 caf\u00E9 \xFF"}};
    EXPECT_EQ(writeJson(value), R"({
  "a" : {
    "empty" : {},
    "path" : "\/Library\/\"x\"\\"
  },
  "b" : [
    1,
    -2,
    true,
    null
  ],
  "none" : [],
  "odd" : "tab\t\u0001\u007f\u009b\u202e\u2029 café )"
                                "\uFFFD\"\n}\n");
}

TEST(Json, AStreamGivesTheSameDocument) {
    std::string text;
    JsonStream out([&](std::string_view piece) { text += piece; });
    out.beginObject();
    out.key("groups");
    out.beginArray();
    out.value({{"name", "a/b"}, {"sizes", {1, 2}}});
    out.beginObject();
    out.key("none");
    out.beginArray();
    out.values(0, [](std::size_t) { return json(); });
    out.end();
    out.key("numbers");
    out.beginArray();
    out.values(3000, [](std::size_t i) { return json{{"number", i}}; });
    out.end();
    out.end();
    out.end();
    out.key("left");
    out.value(std::string(200'000, 'x')); // written in more than one piece
    out.end();
    json numbers = json::array();
    for (std::size_t i = 0; i < 3000; ++i)
        numbers.push_back({{"number", i}});
    const json expected = {
        {"groups", {{{"name", "a/b"}, {"sizes", {1, 2}}}, {{"none", json::array()}, {"numbers", numbers}}}},
        {"left", std::string(200'000, 'x')}};
    EXPECT_EQ(text, writeJson(expected));
}

TEST(Json, ReadsWhatItWrites) {
    const json value = {{"x/\n\u2028", {1.5, 18446744073709551615u, -9223372036854775807, "\U0001F600"}}};
    EXPECT_EQ(parseJson(writeJson(value)), value);
}

TEST(Json, ReadsWhatOthersWrite) {
    const std::string text = "\xEF\xBB\xBF\r\n{\"z\":[-0, 1E+2 ,1.8446744073709551616E19,[ ] , {}],"
                             R"("\u0061\/":"\ud83d\uDE00\u00e9\u20ac\u0000é", "a":null})";
    const json expected = {{"z", {0, 100.0, 18446744073709551616.0, json::array(), json::object()}},
                           {"a/", std::string("\U0001F600\u00E9\u20AC\0\u00E9", 12)},
                           {"a", nullptr}};
    EXPECT_EQ(parseJson(text), expected);
}

TEST(Json, RefusesWhatIsMalformedDeepOrLarge) {
    const auto nested = [](std::size_t levels) {
        return std::string(levels, '[') + std::string(levels, ']');
    };
    const std::pair<const char*, std::string> refused[] = {
        {"cut off", R"({"a" : )"},
        {"a comma too many", R"([1,])"},
        {"a comma missing", R"({"a" : 1 "b" : 2})"},
        {"more than one value", "1 2"},
        {"a number with a zero before it", "[01]"},
        {"a number without digits", "[1.e5]"},
        {"a word of another language", "[nil]"},
        {"half a character", R"(["\ud83d"])"},
        {"its second half first", R"(["\ude00\ud83d"])"},
        {"a control character", "[\"\t\"]"},
        {"a key twice", R"({"a" : 1, "a" : 2})"},
        {"a key twice, further in", R"([{"b" : {"a" : 1, "x" : {}, "\u0061" : 2}}])"},
        {"invalid UTF-8", "\"\xFF\""},
        {"a number beyond all bounds", "1e999"},
        {"a whole number beyond 64 bits", "[18446744073709551616]"},
        {"65 levels", nested(65)},
        {"65 levels with a value", std::string(65, '[') + "1" + std::string(65, ']')},
        {"a million levels", std::string(1'000'000, '[')},
    };
    for (const auto& [why, text] : refused)
        EXPECT_FALSE(parseJson(text)) << why;

    EXPECT_TRUE(parseJson(nested(64)));
    EXPECT_TRUE(parseJson(std::string(64, '[') + "1" + std::string(64, ']')));
    EXPECT_TRUE(parseJson(R"([{"a" : 1}, {"a" : 2}])")) << "one key in two objects";
    EXPECT_TRUE(parseJson("[1]", 3));
    EXPECT_FALSE(parseJson("[1] ", 3));
}

} // namespace
} // namespace tidwen
