#include "base/property_list.h"

#include "samples.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <optional>
#include <plist/plist.h>
#include <string>
#include <type_traits>
#include <utility>

namespace tidwen {
namespace {

using namespace std::string_literals;
using test::utf16;

std::string xml(const std::string& body) {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
)" + body + "\n</plist>\n";
}

TEST(XmlPropertyList, ReadsEveryType) {
    const std::pair<const char*, PropertyListValue> cases[] = {
        {"<string>a &amp; &lt;b&gt; &#233; <![CDATA[<c>]]></string>", "a & <b> é <c>"},
        {"<string> </string>", " "},
        {"<integer> -0x1F </integer>", -31},
        {"<integer>-9223372036854775808</integer>", INT64_MIN},
        {"<integer>18446744073709551615</integer>", UINT64_MAX},
        {"<real>1.5e3</real>", 1500.0},
        {"<real>-infinity</real>", -std::numeric_limits<double>::infinity()},
        {"<false></false>", false},
        {"<date>2001-01-02T00:00:01Z</date>", PropertyListDate{86401}},
        {"<data>\n\tZm9v\n\tYmFy\n</data>", PropertyListData{"foobar"}},
        {"<dict><key>a</key><array><true/><!-- no --><integer>1</integer></array></dict>",
         PropertyListDictionary{{"a", PropertyListArray{true, 1}}}},
        {"<dict><key>k</key><true/><key>k</key><false/></dict>", PropertyListDictionary{{"k", false}}},
        {"<dict><key>CF$UID</key><integer>5</integer></dict>", PropertyListUid{5}},
    };
    for (const auto& [body, expected] : cases) {
        const auto value = parsePropertyList(xml(body));
        ASSERT_TRUE(value) << body;
        EXPECT_EQ(*value, expected) << body;
    }
}

TEST(XmlPropertyList, ReadsWhatToolsLeaveAtTheStart) {
    const auto plain = "<plist version=\"1.0\"><string>ok</string></plist>"s;
    for (const auto& bytes :
         {plain, "\n \t" + xml("<string>ok</string>"), "\xEF\xBB\xBF" + plain,
          "\xEF\xBB\xBF\n" + xml("<string>ok</string>"), utf16(plain, true), utf16(plain, false)})
        EXPECT_EQ(parsePropertyList(bytes), PropertyListValue("ok")) << bytes;
}

TEST(XmlPropertyList, RefusesWhatIsNotStrictlyNested) {
    constexpr const char* refused[][4] = {
        {"", "text", "<true/><true/>", "<unknown/>"},
        {"<plist/>", "<array>", "<array><key>a</key></array>", "<key>a</key>"},
        {"<dict><true/></dict>", "<dict><key/></dict>", "<dict><key/><key/><true/></dict>", "<dict>x</dict>"},
        {"<string><b/></string>", "<string>\x01</string>", "<string>\xFF</string>", "<string>&x;</string>"},
        {"<integer/>", "<integer>1x</integer>", "<integer>--1</integer>", "<integer>1.0</integer>"},
        {"<integer>18446744073709551616</integer>", "<integer>-9223372036854775809</integer>", "<string>",
         "<string/>x"},
        {"<real></real>", "<real>1,5</real>", "<true>x</true>", "<data>Zg=</data>"},
        {"<date>yesterday</date>", "<date>2001-01-01T00:00:00+01:00</date>", "<date/>", "<data>*</data>"},
    };
    for (const auto& row : refused)
        for (const auto* body : row)
            EXPECT_EQ(parsePropertyList(xml(body)).error(), PropertyListError::malformed) << body;
    for (const auto* bytes : {"", "   ", "just text", "{ a = b; }", "bplist", "\"key\" = \"value\";"})
        EXPECT_EQ(parsePropertyList(bytes).error(), PropertyListError::notRecognised) << bytes;
    EXPECT_EQ(parsePropertyList("<string>no root</string>").error(), PropertyListError::malformed);
}

TEST(PropertyList, BothFormsReadWhatTheyWrite) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        const auto value = test::PropertyListGenerator(seed).value();
        ASSERT_EQ(parsePropertyList(writeBinaryPropertyList(value)), value);
        ASSERT_EQ(parsePropertyList(writeXmlPropertyList(value)), value);
    }
}

using Other = std::unique_ptr<void, void (*)(plist_t)>;

Other readByOther(const std::string& bytes) {
    plist_t list = nullptr;
    const auto size = static_cast<std::uint32_t>(bytes.size());
    const auto read = [&](auto function) { // since 2.3 it has another argument, for the form it found
        if constexpr (std::is_invocable_v<decltype(function), const char*, std::uint32_t, plist_t*>)
            function(bytes.data(), size, &list);
        else
            function(bytes.data(), size, &list, nullptr);
    };
    read(&plist_from_memory);
    return {list, plist_free};
}

using WriteByOther = decltype(&plist_to_bin);

std::string writtenByOther(plist_t list, WriteByOther write) {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    write(list, &bytes, &size);
    const std::string copy(bytes ? bytes : "", size);
    free(bytes);
    return copy;
}

/// Compares the readers and writers with another implementation of the formats. Without references, which the
/// other one reads as dictionaries in XML.
TEST(PropertyList, AgreesWithAnotherImplementation) {
    for (unsigned seed = 1000; seed < 1200; ++seed) {
        SCOPED_TRACE(seed);
        const auto value = test::PropertyListGenerator(seed, false).value();
        for (const auto& ours : {writeBinaryPropertyList(value), writeXmlPropertyList(value)}) {
            const auto other = readByOther(ours);
            ASSERT_TRUE(other);
            ASSERT_EQ(parsePropertyList(writtenByOther(other.get(), plist_to_bin)), value);
            ASSERT_EQ(parsePropertyList(writtenByOther(other.get(), plist_to_xml)), value);
        }
    }
}

TEST(PropertyList, WritesWhatTheFormsCannotHold) {
    const std::pair<PropertyListValue, PropertyListValue> viaXml[] = {
        {"bell \x07 \uFFFF \xFF return \r\n", "bell \uFFFD \uFFFD \uFFFD return \r\n"},
        {PropertyListDate{1e300}, PropertyListDate{252423993599}},
        {PropertyListDate{-1e300}, PropertyListDate{-63145526400}},
        {PropertyListDate{-0.5}, PropertyListDate{-1}},
    };
    for (const auto& [given, read] : viaXml)
        EXPECT_EQ(parsePropertyList(writeXmlPropertyList(given)), read);
    const auto notANumber = parsePropertyList(writeXmlPropertyList(std::nan("")));
    EXPECT_TRUE(notANumber && std::isnan(std::get<double>(notANumber->storage())));
    EXPECT_EQ(parsePropertyList(writeBinaryPropertyList("a\xFFz")), PropertyListValue("a\uFFFDz"));
    EXPECT_EQ(parsePropertyList(writeBinaryPropertyList(PropertyListDate{std::nan("")})),
              PropertyListValue(PropertyListDate{0}));
}

TEST(PropertyList, WritesXmlAsMacOsDoes) {
    const PropertyListDictionary value{{"Icon", PropertyListData{std::string(54, 'x')}},
                                       {"Arguments", PropertyListArray{"<a>", true}}};
    EXPECT_EQ(writeXmlPropertyList(value), xml(R"(<dict>
	<key>Arguments</key>
	<array>
		<string>&lt;a&gt;</string>
		<true/>
	</array>
	<key>Icon</key>
	<data>
	eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4
	eHh4
	</data>
</dict>)"));
}

TEST(PropertyListValue, AnswersNothingForAnotherType) {
    EXPECT_EQ(PropertyListValue(5).asBool(), std::nullopt);
    EXPECT_EQ(PropertyListValue(UINT64_MAX).asInteger(), std::nullopt);
    EXPECT_EQ(PropertyListValue(PropertyListArray{"a", 1}).asStrings(), std::nullopt);
    EXPECT_EQ(PropertyListValue("k").find("k"), nullptr);
    EXPECT_EQ(PropertyListValue(PropertyListDictionary{{"k", 5}}).findString("k"), nullptr);
}

} // namespace
} // namespace tidwen
