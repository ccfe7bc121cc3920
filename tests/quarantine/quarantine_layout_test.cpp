#include "base/path.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "quarantine/entries.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/trash_lock.h"
#include "support/fixtures.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace tidwen::test {
namespace {

TEST(QuarantineLayout, NamesTheFolderAfterWhatIsRemoved) {
    std::string accents;
    while (accents.size() < 300)
        accents += "é";
    const std::pair<std::string, std::string> names[] = {
        {"A/B:C\\D", "A-B-C-D"},
        {"  Notes\n", "Notes"},
        {" \t\n", "App"},
        {"..", "App"},
        {"Tidwen-Manifest.json", "App"},
        {"two\nlines\x1b[2J\xc2\x9b", "two-lines-[2J-"},
        {"\xff", "\xef\xbf\xbd"},
        {"x" + accents, "x" + accents.substr(0, 216)},
    };
    for (const auto& [name, expected] : names)
        EXPECT_EQ(safeLabel(name), expected) << name;

    const auto stamp = folderStamp(runDate);
    EXPECT_EQ(makeLayout({{" ", ""}}, runDate, alice()).root.lastComponent(), "Tidwen - App - " + stamp);
    EXPECT_EQ(makeLayout({{"One", ""}, {"Two", ""}}, runDate, alice()),
              (QuarantineLayout{Path("/Users/alice/.Trash/Tidwen - 2 apps - " + stamp), true}));
}

TEST(QuarantineLayout, TakesTheNextFreeNameUpToAHundred) {
    TemporaryVolume volume;
    volume.makeFolder("/Users/alice");
    const std::vector<AppRecord> apps = {{std::string(300, 'n'), ""}};
    const auto plain = makeLayout(apps, runDate, alice()).root.string();
    volume.link(plain, "nowhere"); // a dangling link takes the name too
    for (int attempt = 2; attempt <= 100; ++attempt) {
        const auto made = createQuarantineFolder(apps, runDate, alice(), volume.files());
        ASSERT_TRUE(made) << attempt;
        EXPECT_EQ(made->root.string(), fmt::format("{} ({})", plain, attempt));
    }
    EXPECT_EQ(createQuarantineFolder(apps, runDate, alice(), volume.files()).error().fault,
              FileFault::exists);
    EXPECT_EQ(listQuarantineFolders(alice(), volume.files())->size(), 99u);
}

TEST(QuarantineLayout, ATrashThatIsALinkIsRefused) {
    TemporaryVolume volume;
    volume.makeFolder("/Library/Elsewhere/Tidwen - Notes");
    for (const auto* target : {"/Library/Elsewhere", "/Library/Missing"}) {
        volume.link("/Users/alice/.Trash", target);
        EXPECT_EQ(createQuarantineFolder({}, runDate, alice(), volume.files()).error().fault,
                  FileFault::throughLink);
        EXPECT_EQ(listQuarantineFolders(alice(), volume.files()).error().fault, FileFault::throughLink);
        EXPECT_EQ(lockTrash(alice(), volume.files()).error(),
                  (Message{"failure.notBegun %@ %@",
                           {"/Users/alice/.Trash", Message{"failure.file.throughLink"}}}));
        std::filesystem::remove(volume.host("/Users/alice/.Trash"));
    }
    EXPECT_EQ(volume.files().list(Path("/Library"))->size(), 1u);
    EXPECT_EQ(volume.files().list(Path("/Library/Elsewhere"))->size(), 1u);
}

TEST(QuarantineLayout, ATrashThatNothingMayBePutIntoIsNamedAsSuch) {
    const Path trash("/Users/alice/.Trash");
    const auto made = [&](const char* name) {
        return describeNotBegun({.fault = FileFault::denied, .path = trash / name});
    };
    EXPECT_EQ(made("Tidwen - Notes - 2026-11-14 17-26-00"),
              (Message{"failure.trashDenied %@", {trash.string()}}));
    EXPECT_EQ(made("other"), (Message{"failure.notBegun %@ %@",
                                      {(trash / "other").string(), Message{"failure.file.denied"}}}));
}

} // namespace
} // namespace tidwen::test
