#include "base/path.h"
#include "scan/applications/installed_app.h"
#include "sweep/installer_scanner.h"

#include "support/fixtures.h"

#include <cstdint>
#include <gmock/gmock.h>
#include <string>
#include <vector>

namespace tidwen {
namespace {

std::vector<InstalledApp> installed(const std::vector<std::string>& names) {
    std::vector<InstalledApp> apps;
    for (const auto& name : names) {
        InstalledApp app;
        app.name = name;
        apps.push_back(app);
    }
    return apps;
}

TEST(InstallerScanner, MatchesByTheLongestLeadingName) {
    const struct {
        const char* file;
        std::vector<std::string> apps;
        const char* expected; ///< nullptr: none
    } cases[] = {
        {"Quill-4.2.dmg", {"Quill"}, "Quill"},
        {"Quill-4.2.dmg", {"Quil"}, nullptr}, // four letters must be the whole leading word
        {"Kip 2.dmg", {"Kip"}, "Kip"},
        {"kipper-tool.dmg", {"Kip"}, nullptr},
        {"Zo.dmg", {"Zo"}, nullptr}, // two letters are no evidence
        {"MarlinNotesBeta.pkg", {"Marlin", "Marlin Notes"}, "Marlin Notes"},
        {"Foo Bar-2.3.1-arm64.dmg", {"Foo Bar"}, "Foo Bar"},
        {"-1.0.dmg", {"Marlin"}, nullptr},
        {"Cafe\xCC\x81-1.0.dmg", {"Caf\xC3\xA9"}, "Caf\xC3\xA9"}, // decomposed on the disk
        {"\xE5\x86\x99\xE4\xBD\x9CStudio.dmg",
         {"\xE5\x86\x99\xE4\xBD\x9C Studio"},
         "\xE5\x86\x99\xE4\xBD\x9C Studio"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const auto match = matchInstaller(c.file, installed(c.apps));
        EXPECT_EQ(match ? match->name : "", c.expected ? c.expected : "");
    }
}

TEST(InstallerScanner, ListsLargestFirstAndLooksIntoPackages) {
    const test::TemporaryVolume volume;
    volume.write("/Users/alice/Downloads/Setup.PKG", std::string(100, 'x'));
    volume.write("/Users/alice/Downloads/Tool.mpkg/Contents/a", std::string(50'000, 'x'));
    volume.write("/Users/alice/Downloads/.hidden.dmg", "x");
    volume.write("/Users/alice/Downloads/sub/inner.dmg", "x");
    volume.write("/Users/alice/Downloads/readme.txt", "x");
    volume.link("/Users/alice/Downloads/link.dmg", "/Users/alice/Downloads/Setup.PKG");
    volume.write("/Users/alice/Downloads/\xff.dmg", "x");
    volume.write("/Users/alice/Downloads/\xff.txt", "x");
    const auto setup = volume.files().info(Path("/Users/alice/Downloads/Setup.PKG"));
    ASSERT_TRUE(setup && setup->allocatedBytes != 100);
    auto result = listInstallers(volume.files(), test::alice(), {});
    for (auto& file : result.files)
        if (file.isFolder) setSize(file, *measurePackage(volume.files(), file.url));
    sortBySize(result.files);
    EXPECT_EQ(result.skippedNames, std::vector{Path("/Users/alice/Downloads/\xff.dmg")});
    ASSERT_EQ(result.files.size(), 3u);
    EXPECT_EQ(result.files[0].url, Path("/Users/alice/Downloads/Tool.mpkg"));
    EXPECT_GE(result.files[0].sizeBytes.value_or(0), 50'000);
    EXPECT_EQ(result.files[1].sizeBytes, 100) << "the file's size, not what it takes on the disk";
    EXPECT_FALSE(result.unreadable);
    const auto listed = installerTrace(result.files[1]).found;
    ASSERT_TRUE(listed && listed->isStill(*setup));
    volume.write("/Users/alice/Downloads/Setup.PKG", "other");
    EXPECT_FALSE(listed->isStill(*volume.files().info(result.files[1].url)));

    const test::TemporaryVolume empty;
    EXPECT_TRUE(listInstallers(empty.files(), test::alice(), {}).unreadable);
}

} // namespace
} // namespace tidwen
