#include "scan/applications/installed_bundles.h"

#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/unprivileged.h"

namespace tidwen {
namespace {

using test::writeBundle;

/// Every bundle declares one group, called after its file.
class GroupPerBundle : public CodeSignatures {
  public:
    CodeSignature read(const Path& bundle, const Path&) const override {
        return {std::nullopt, {"group." + bundle.stem()}};
    }
};

class InstalledBundlesTest : public testing::Test {
  protected:
    std::shared_ptr<const BundleSnapshot> look() { return bundles.look(); }

    test::TemporaryVolume volume;
    const GroupPerBundle signatures;
    InstalledBundles bundles{volume.files(), signatures, test::alice()};
};

TEST_F(InstalledBundlesTest, KnowsWhatLiesWhereBundlesReallyAre) {
    const char* owning[] = {"/Applications/.Hidden/Own.app",
                            "/Applications/A/B/C/D/E/Deep.app",
                            "/Applications/Zebra.app",
                            "/Library/Application Support/Maker/Pad.app",
                            "/Library/Audio/Plug-Ins/HAL/Loop.driver",
                            "/Library/Filesystems/Maker/Disk.fs",
                            "/Library/Printers/Maker/Tools/Queue.app",
                            "/Users/Shared/Maker/Shared.app",
                            "/Users/alice/Applications/Own.app",
                            "/Users/alice/Desktop/Loose.app",
                            "/Users/alice/Documents/Loose.app",
                            "/Users/alice/Downloads/unpacked/1.0/Loose.app",
                            "/Users/alice/Games/Chess/Chess.app",
                            "/Users/alice/Library/Application Support/Maker/Updater.app",
                            "/Users/alice/Library/Developer/Xcode/DerivedData/P-x/Build/Products/Debug/P.app",
                            "/Users/bob/Applications/Theirs.app",
                            "/opt/homebrew/Caskroom/tool/1.0/Tool.app",
                            "/opt/maker/Opt.app",
                            "/usr/local/Cellar/tool/2.0/Tool.app"};
    for (const char* path : owning)
        writeBundle(volume, path, "com.example.x", "X");
    for (const char* other : {"/Applications/Zebra.app/Contents/Helpers/In.app", "/Applications/\xff.app",
                              "/Users/alice/.Trash/Gone.app", "/Elsewhere/Away.app"})
        writeBundle(volume, other, "com.example.x", "X");
    volume.link("/Applications/Loop", "/Applications");
    volume.write("/Applications/File.app", "x");
    const auto snapshot = look();
    EXPECT_THAT(eachOf(snapshot->bundles(), &OwningBundle::url),
                testing::ElementsAreArray(std::vector<Path>(std::begin(owning), std::end(owning))));
    EXPECT_TRUE(snapshot->coverage().isComplete());
}

TEST_F(InstalledBundlesTest, FollowsLinksToTheBundleTheyName) {
    writeBundle(volume, "/Elsewhere/Real.app", "com.example.real", "Real");
    writeBundle(volume, "/Elsewhere/Folder/In.app", "com.example.in", "In");
    volume.link("/Applications/First.app", "/Elsewhere/Real.app");
    volume.link("/Applications/Second.app", "First.app");
    volume.link("/Applications/Folder", "/Elsewhere/Folder");
    const auto snapshot = look();
    ASSERT_EQ(snapshot->bundles().size(), 2u);
    const auto& real = snapshot->bundles()[0];
    EXPECT_EQ(real.url, Path("/Applications/First.app"));
    EXPECT_EQ(real.place, Path("/Elsewhere/Real.app"));
    EXPECT_THAT(real.names, testing::IsSupersetOf({"First", "Second", "Real"}));
    EXPECT_EQ(snapshot->bundles()[1].place, Path("/Elsewhere/Folder/In.app"));
}

TEST_F(InstalledBundlesTest, ContentsAreWhatABundleDeclaresAndCarries) {
    writeBundle(volume, "/Applications/Own.app",
                {{"CFBundleIdentifier", "com.example.own"},
                 {"CFBundleName", "Own"},
                 {"CFBundleExecutable", "run"},
                 {"SMPrivilegedExecutables", PropertyListDictionary{{"com.example.tool", "anchor"}}}});
    writeBundle(volume, "/Applications/Own.app/Contents/PlugIns/Ext.appex", "com.example.ext", "Ext");
    volume.write("/Applications/Own.app/Contents/Library/LaunchDaemons/job.plist",
                 writeXmlPropertyList(PropertyListDictionary{{"Label", "com.example.job"}}));
    const auto snapshot = look();
    ASSERT_EQ(snapshot->bundles().size(), 1u);
    EXPECT_THAT(snapshot->bundles()[0].names, testing::ElementsAre("Own", "run"));
    const auto& contents = snapshot->contents(0);
    EXPECT_TRUE(contents.isComplete);
    EXPECT_THAT(contents.embeddedIDs, testing::ElementsAre("com.example.ext", "com.example.tool"));
    EXPECT_THAT(contents.groups, testing::ElementsAre("group.Own", "group.Ext"));
    ASSERT_EQ(contents.jobs.size(), 1u);
    EXPECT_TRUE(contents.jobs[0].isSystemDomain);
}

TEST_F(InstalledBundlesTest, SaysWhatItCouldNotSee) {
    EXPECT_FALSE(look()->coverage().seesApplications);
    writeBundle(volume, "/Applications/Fine.app", "com.example.fine", "Fine");
    volume.makeFolder("/Applications/No Info.app");
    volume.write("/Applications/Broken.app/Contents/Info.plist", "<plist>");
    for (int i = 0; i < 2'100; ++i)
        volume.makeFolder("/Users/alice/Downloads/" + std::to_string(i));
    const auto all = look();
    EXPECT_TRUE(all->coverage().seesApplications);
    EXPECT_THAT(all->coverage().damaged, testing::ElementsAre(Path("/Applications/Broken.app")));
    EXPECT_THAT(all->coverage().uncounted, testing::ElementsAre(Path("/Users/alice/Downloads")));
    EXPECT_EQ(all->bundles().size(), 3u);
    volume.link("/Applications/Away.app", "/Volumes/Drive/Away.app");
    EXPECT_THAT(look()->coverage().unreadable, testing::ElementsAre(Path("/Applications/Away.app")));
    std::filesystem::remove(volume.host("/Applications/Away.app"));

    volume.makeFolder("/Applications/Closed");
    volume.makeFolder("/Users/bob/Library/Services");
    test::giveToUnprivileged(volume.hostRoot());
    test::asUnprivileged([&] {
        std::filesystem::permissions(volume.hostRoot() / "Applications/Closed", {});
        std::filesystem::permissions(volume.hostRoot() / "Users/bob/Library/Services", {});
        const auto part = look();
        EXPECT_THAT(part->coverage().unreadable, testing::ElementsAre(Path("/Applications/Closed")));
        EXPECT_FALSE(part->coverage().seesApplications);
    });
}

} // namespace
} // namespace tidwen
