#include "base/path.h"
#include "operations/keychain_dump.h"
#include "operations/tool_launchd.h"
#include "operations/tool_receipts.h"
#include "operations/tool_system_extensions.h"
#include "platform/keychain.h"
#include "platform/process_runner.h"
#include "platform/system_extensions.h"
#include "support/recording_tools.h"

#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using test::RecordingTools;

TEST(KeychainDump, CountsServicesByTheRuleOfPrintedValues) {
    const auto item = [](const std::string& itemClass, const std::string& attribute) {
        return "keychain: \"/Library/Keychains/System.keychain\"\nversion: 256\nclass: " + itemClass
               + "\nattributes:\n    0x00000007 <blob>=\"com.example.label\"\n" + attribute
               + "\n    \"type\"<uint32>=<NULL>\n";
    };
    const std::string dump =
        item("\"genp\"", "    \"svce\"<blob>=\"com.example.b\"")
        + item("\"genp\"", "    \"svce\"<blob>=\"a \"quoted\" one\"")
        + item("\"genp\"", "    \"svce\"<blob>=0x436166C3A92053796E63  \"Caf\\303\\251 Sync\"")
        + item("\"inet\"", "    \"srvr\"<blob>=\"mail.example.com\"")
        + item("\"genp\"", "    \"svce\"<blob>=\"com.example.b\"")
        + item("\"genp\"", "    \"svce\"<blob>=0x6261636B5C736C617368  \"back\\134slash\"")
        + item("\"genp\"", "    \"svce\"<blob>=0x636F6D2E6578616D706C65")
        // Items that are not passwords, or have no service that can be named:
        + item("0x80001000 ", "    \"svce\"<blob>=\"com.example.certificate\"")
        + item("\"inet\"", "    \"svce\"<blob>=\"com.example.inet\"")
        + item("\"genp\"", "    \"svce\"<blob>=<NULL>") + item("\"genp\"", "    \"svce\"<blob>=\"\"")
        + item("\"genp\"", "    \"svce\"<blob>=") + item("\"genp\"", "    \"svce\"<blob>=\"")
        + item("\"genp\"", "    \"svce\"<blob>=0xFFFE ")
        + item("\"genp\"", "    \"acct\"<blob>=\"x\"    \"svce\"<blob>=\"com.example.account\"");
    const std::vector<KeychainEntry> expected = {{"com.example.b", 2, true},    {"a \"quoted\" one", 1, true},
                                                 {"Caf\xC3\xA9 Sync", 1, true}, {"mail.example.com", 1, true},
                                                 {"back\\slash", 1, true},      {"com.example", 1, true}};
    EXPECT_EQ(parseKeychainDump(dump, true), expected);
}

TEST(SystemExtensionList, ReadsTabsAndWhatIsLeftOfThem) {
    const char* const output =
        "6 extension(s)\n\n"
        "--- com.apple.system_extension.network_extension (Go to 'Settings > Extensions (all)' to modify "
        "these)\n"
        "enabled\tactive\tteamID\tbundleID (version)\tname\t[state]\n"
        "*\t*\tABCDE12345\tcom.example.filter (2.0/20)\tMarlin Filter (beta)\t[activated enabled]\n"
        "\t\tABCDE12345\tcom.example.filter (1.9/19)\tOld Filter\t[terminated waiting to uninstall on "
        "reboot]\n"
        "\t*\tVWXYZ67890\tcom.example.pending (1/1)\tPending\t[activated waiting for user]\n"
        "--- com.apple.system_extension.driver_extension\n"
        "enabled active  teamID  bundleID (version)      name    [state]\n"
        "*       *       FGHIJ12345      com.example.driver (0.2.13/0.2.13) com.example.driver[activated "
        "enabled]\n"
        "        *       FGHIJ12345      com.example.camera (1.0 beta/2)      A (nice) Camera    [activated "
        "enabled]\n"
        "broken\n*\t*\n(\n.(\n*\t*\tABCDE12345\t (1/1)\tNo identifier\t[activated enabled]\n";
    const std::vector<SystemExtensionRecord> expected = {
        {"ABCDE12345", "com.example.filter", "Marlin Filter (beta)"},
        {"VWXYZ67890", "com.example.pending", "Pending"},
        {"FGHIJ12345", "com.example.driver", "com.example.driver"},
        {"FGHIJ12345", "com.example.camera", "A (nice) Camera"}};
    EXPECT_EQ(parseSystemExtensionList(output), expected);
    EXPECT_TRUE(parseSystemExtensionList("0 extension(s)\n").empty());
}

TEST(DisabledServices, ReadsBothWordPairsAndNoOtherList) {
    const std::map<std::string, bool> expected = {{"com.example.off", true}, {"com.example.on", false}};
    EXPECT_EQ(parseDisabledServices("disabled services = {\n\t\"com.example.off\" => false\n"
                                    "\t\"com.example.off\" => true\n\t\"com.example.on\" => false\n}\n"),
              expected);
    EXPECT_EQ(
        parseDisabledServices("\n\tdisabled services = {\n\t\t\"com.example.off\" => disabled\n"
                              "\t\t\"com.example.on\" => enabled\n\t\t\"\" => disabled\n\t}\n\n"
                              "\tlogin item associations = {\n\t\t\"com.example.on\" => \"com.example.app\"\n"
                              "\t\t\"a\" => \"b\" => disabled\n\t}\n"),
        expected);
    EXPECT_TRUE(parseDisabledServices("disabled services = (no disabled services)\n").empty());
}

TEST(ToolReceipts, ReadsWhatPkgutilSaysAndNeverAnOption) {
    const auto plist = [](const std::string& volume, const std::string& location) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + location
               + "<key>pkgid</key><string>com.example.pkg</string><key>volume</key>" + volume
               + "</dict></plist>\n";
    };
    const auto at = [](const std::string& path) {
        return "<key>install-location</key><string>" + path + "</string>";
    };
    const std::pair<std::string, std::optional<Path>> bases[] = {
        {plist("<string>/</string>", ""), Path("/")},
        {plist("<string>/Volumes/Shed</string>", at("/opt")), Path("/Volumes/Shed/opt")},
        {plist("<string></string>", at("x")), std::nullopt},
        {plist("<integer>1</integer>", at("x")), std::nullopt},
        {"package-id: com.example.pkg", std::nullopt}};
    for (const auto& [text, base] : bases)
        EXPECT_EQ(parsePackageInstallBase(text), base) << text;

    RecordingTools tools;
    tools.answer = [](const auto&) { return ProcessResult{0, "com.example.a\n--forget\n", ""}; };
    const ToolReceipts receipts(tools);
    EXPECT_EQ(receipts.packageIDs(), std::vector<std::string>{"com.example.a"});
    tools.calls.clear();
    EXPECT_FALSE(receipts.read("--forget"));
    EXPECT_TRUE(tools.calls.empty());
}

} // namespace
} // namespace tidwen
