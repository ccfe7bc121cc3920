#include "base/path.h"
#include "base/property_list.h"
#include "platform/code_signatures.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/owning_bundle.h"

#include "platform/file_code_signatures.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/unprivileged.h"
#include "support/watched_files.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fmt/core.h>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using test::writeBundle;

/// Every bundle declares one group, named after its file.
class GroupPerBundle : public CodeSignatures {
  public:
    CodeSignature read(const Path& bundle, const Path&) const override {
        return {std::nullopt, {"group." + bundle.stem()}};
    }
};

class InstalledBundlesTest : public testing::Test {
  protected:
    std::shared_ptr<const BundleSnapshot> look() { return bundles.look(InstalledBundles::Reach::further); }

    test::TemporaryVolume volume;
    const GroupPerBundle signatures;
    InstalledBundles bundles{volume.files(), signatures, test::alice()};
};

TEST_F(InstalledBundlesTest, KnowsWhatLiesWhereBundlesReallyAre) {
    const char* owning[] = {"/Applications/.Hidden/Own.app",
                            "/Applications/A/B/C/D/E/Deep.app",
                            "/Applications/Su\xe9te/In.app",
                            "/Applications/Zebra.app",
                            "/Applications/\xff.app",
                            "/Library/Application Support/Maker/Pad.app",
                            "/Library/Audio/Plug-Ins/HAL/Loop.driver",
                            "/Library/Audio/Plug-Ins/VST3/Maker/Sub/Synth.vst3",
                            "/Library/Filesystems/Maker/Disk.fs",
                            "/Library/Printers/Maker/Tools/Queue.app",
                            "/Loose.app",
                            "/Users/Shared/Maker/Shared.app",
                            "/Users/alice/Applications/Own.app",
                            "/Users/alice/Desktop/Loose.app",
                            "/Users/alice/Documents/Loose.app",
                            "/Users/alice/Documents/a/b/Deep.app",
                            "/Users/alice/Downloads/unpacked/1.0/Loose.app",
                            "/Users/alice/Games/Chess/Chess.app",
                            "/Users/alice/Games/a/b/c/d/Deep.app",
                            "/Users/alice/Library/Application Support/Maker/Sub/App.app",
                            "/Users/alice/Library/Application Support/Maker/Updater.app",
                            "/Users/alice/Library/Application Support/Store/library/common/Game/Game.app",
                            "/Users/alice/Library/Developer/Xcode/DerivedData/P-x/Build/Products/Debug/P.app",
                            "/Users/alice/Loose.app",
                            "/Users/alice/Projects/Tools/Loose.app",
                            "/Users/bob/Applications/Theirs.app",
                            "/Users/b\xe9n/Applications/Theirs.app",
                            "/opt/a/b/c/Deep.app",
                            "/opt/homebrew/Caskroom/tool/1.0/Tool.app",
                            "/opt/maker/Opt.app",
                            "/usr/local/Cellar/tool/2.0/Tool.app",
                            "/usr/local/maker/Tool.app"};
    for (const char* path : owning)
        writeBundle(volume, path, "com.example.x", "X");
    for (const char* other :
         {"/Applications/Zebra.app/Contents/Helpers/In.app", "/Users/alice/.Trash/Gone.app",
          "/Users/alice/Projects/.git/Past.app", "/Users/alice/.Trash/Run/Gone.app", "/Elsewhere/Away.app"})
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
    EXPECT_THAT(real.foundAs, testing::UnorderedElementsAre(Path("/Applications/First.app"),
                                                            Path("/Applications/Second.app")));
    EXPECT_THAT(real.names, testing::IsSupersetOf({"First", "Second", "Real"}));
    EXPECT_EQ(snapshot->bundles()[1].place, Path("/Elsewhere/Folder/In.app"));
}

TEST_F(InstalledBundlesTest, TellsABundleByItsInfoAndNotByItsName) {
    const std::pair<const char*, const char*> infos[] = {
        {"/Applications/Suite.bundle/In.app/Contents/Info.plist", "com.example.in"},
        {"/Applications/Games.app/Board/Chess.app/Contents/Info.plist", "com.example.chess"},
        {"/Applications/Lower.app/contents/info.PLIST", "com.example.lower"},
        {"/Applications/Flat.app/info.plist", "com.example.flat"}};
    for (const auto& [file, identifier] : infos) {
        volume.write(file, writeXmlPropertyList(PropertyListDictionary{{"CFBundleIdentifier", identifier}}));
        const auto snapshot = look();
        EXPECT_THAT(eachOf(snapshot->bundles(), &OwningBundle::bundleID), testing::Contains(identifier));
        snapshot->readAllContents({});
        for (std::size_t i = 0; i < snapshot->bundles().size(); ++i)
            EXPECT_EQ(snapshot->contents(i).isComplete, snapshot->bundles()[i].isReadable) << file;
    }
    // Data of an application whose identifier ends like that of a plug-in, which claims nothing of it.
    volume.write("/Users/alice/Library/Application Support/com.example.plugin/data", "x");
    const auto snapshot = look();
    for (const auto& bundle : snapshot->bundles())
        EXPECT_THAT(bundle.names, testing::Not(testing::Contains("com.example"))) << bundle.url.string();
}

/// A scan that saw fewer places than the sweep would take what the sweep leaves alone.
TEST_F(InstalledBundlesTest, SeesTheSamePlacesForEveryCaller) {
    const std::string home = "/Users/alice/";
    for (const auto& place : {home + "Pictures/", home + "Work/a/b/", std::string("/usr/local/apps/")})
        writeBundle(volume, place + "Far.app", "com.example.far", "Far");
    EXPECT_EQ(eachOf(bundles.look(InstalledBundles::Reach::usual)->bundles(), &OwningBundle::url),
              eachOf(look()->bundles(), &OwningBundle::url));
    EXPECT_EQ(look()->bundles().size(), 3u);
}

/// Only an original set aside can be whole. It contests nothing, but what it left behind is not without
/// owner.
TEST_F(InstalledBundlesTest, WhatIsOnItsWayBetweenDisksIsNotInstalled) {
    for (const char* name : {"arrived", "arrived2", "copy", "moved", "moved9", "new"}) {
        const auto item = fmt::format("/Applications/.tidwen-{}-Maker", name);
        writeBundle(volume, item + ".app", std::string("com.example.") + name, "Maker");
        writeBundle(volume, item + "/In.app", std::string("com.example.in.") + name, "In");
    }
    const auto ids = [&](InstalledBundles::Reach reach) {
        return eachOf(bundles.look(reach)->bundles(), &OwningBundle::bundleID);
    };
    EXPECT_THAT(ids(InstalledBundles::Reach::usual),
                testing::UnorderedElementsAre("com.example.new", "com.example.in.new"));
    EXPECT_THAT(ids(InstalledBundles::Reach::further),
                testing::UnorderedElementsAre("com.example.new", "com.example.in.new", "com.example.moved",
                                              "com.example.in.moved", "com.example.moved9",
                                              "com.example.in.moved9"));
}

TEST_F(InstalledBundlesTest, ContentsAreWhatABundleDeclaresAndCarries) {
    writeBundle(volume, "/Applications/Own.app",
                {{"CFBundleIdentifier", "com.example.own"},
                 {"CFBundleName", "Own"},
                 {"CFBundleExecutable", "run"},
                 {"SMPrivilegedExecutables", PropertyListDictionary{{"com.example.tool", "anchor"}}}});
    writeBundle(volume, "/Applications/Own.app/Contents/PlugIns/Ext.appex", "com.example.ext", "Ext");
    const std::string engine = "/Applications/Own.app/Contents/Frameworks/Engine.framework";
    writeBundle(volume, engine + "/Versions/A/Helpers/Tab.app", "com.example.tab", "Tab");
    writeBundle(volume, engine + "/Versions/A/Helpers/Tab.app/Contents/PlugIns/Two.appex", "com.example.two",
                "Two");
    volume.link(engine + "/Versions/Current", "A");
    volume.link(engine + "/Helpers", "Versions/Current/Helpers");
    volume.write("/Applications/Own.app/Contents/Library/LaunchDaemons/job.plist",
                 writeXmlPropertyList(PropertyListDictionary{{"Label", "com.example.job"}}));
    for (const auto* tool : {"com.example.old", "Read Me"})
        volume.write(std::string("/Applications/Own.app/Contents/Library/LaunchServices/") + tool, "x");
    const auto snapshot = look();
    ASSERT_EQ(snapshot->bundles().size(), 1u);
    EXPECT_THAT(snapshot->bundles()[0].names, testing::ElementsAre("Own", "run"));
    const auto& contents = snapshot->contents(0);
    EXPECT_TRUE(contents.isComplete);
    EXPECT_THAT(contents.embeddedIDs,
                testing::ElementsAre("com.example.ext", "com.example.old", "com.example.tab",
                                     "com.example.tool", "com.example.two"));
    EXPECT_THAT(contents.groups, testing::ElementsAre("group.Own", "group.Ext", "group.Tab", "group.Two"));
    EXPECT_THAT(contents.embeddedNames, testing::ElementsAre("Ext", "Tab", "Two"));
    ASSERT_EQ(contents.jobs.size(), 1u);
    EXPECT_TRUE(contents.jobs[0].isSystemDomain);
}

TEST_F(InstalledBundlesTest, LooksDeeperIntoBundlesOnlyWhereEverythingUnownedIsClaimed) {
    const std::string own = "/Applications/Own.app", contents = own + "/Contents/";
    const std::string engine = "Frameworks/Engine.framework/Versions/B/";
    writeBundle(volume, own, "com.example.own", "Own");
    std::vector<std::string> identifiers;
    for (const auto& place :
         {contents, own + "/", contents + engine, contents + "SharedFrameworks/E.framework/XPCServices/",
          contents + "PlugIns/Folder/", contents + "Library/Screen Savers/", contents + "Versions/2.0/",
          contents + "ExtensionKit/", contents + "SharedSupport/x/y/", contents + "Resources/Folder/",
          contents + "Tools/", contents + "bin/"}) {
        identifiers.push_back("com.example.n" + std::to_string(identifiers.size()));
        writeBundle(volume, place + "In.app", identifiers.back(), "In");
    }
    std::sort(identifiers.begin(), identifiers.end());
    for (const auto reach : {InstalledBundles::Reach::usual, InstalledBundles::Reach::further}) {
        const auto snapshot = bundles.look(reach);
        const bool isFurther = reach == InstalledBundles::Reach::further;
        EXPECT_EQ(snapshot->contents(0).embeddedIDs, isFurther ? identifiers : std::vector<std::string>{});
        EXPECT_TRUE(snapshot->contents(0).isComplete);
    }
}

TEST_F(InstalledBundlesTest, NamesABundleOfWhichAPartCannotBeRead) {
    const FileCodeSignatures fromFiles(volume.files());
    InstalledBundles installed(volume.files(), fromFiles, test::alice());
    const Path own("/Applications/Own.app");
    test::giveToUnprivileged(volume.hostRoot());
    test::asUnprivileged([&] {
        using std::filesystem::perms;
        const std::string contents = own.string() + "/Contents";
        const auto isNamed = [&] {
            const auto snapshot = installed.look(InstalledBundles::Reach::further);
            snapshot->readAllContents({});
            const auto coverage = snapshot->coverageWithContents();
            EXPECT_EQ(snapshot->coverageWithContents({own}).unreadable, std::vector<Path>());
            const bool isComplete = snapshot->bundles().size() == 1 && snapshot->contents(0).isComplete;
            EXPECT_EQ(isComplete, coverage.isComplete());
            return coverage.damaged == std::vector{own} || coverage.unreadable == std::vector{own};
        };
        writeBundle(volume, own.string(), "com.example.own", "Own");
        writeBundle(volume, contents + "/Library/LoginItems/H.app", "com.example.helper", "H");
        writeBundle(volume, contents + "/PlugIns/W.appex", "com.example.widget", "W");
        const auto groups = writeXmlPropertyList(PropertyListDictionary{});
        volume.write(contents + "/MacOS/Own", "#!");
        volume.write(contents + "/_CodeSignature/CodeEntitlements", groups);
        volume.write(contents + "/Library/LaunchAgents/job.plist",
                     writeXmlPropertyList(PropertyListDictionary{{"Label", "com.example.job"}}));
        EXPECT_FALSE(isNamed());
        for (const auto* part :
             {"", "/Contents", "/Contents/Info.plist", "/Contents/Library", "/Contents/Library/LoginItems",
              "/Contents/Library/LoginItems/H.app", "/Contents/Library/LoginItems/H.app/Contents",
              "/Contents/Library/LoginItems/H.app/Contents/Info.plist", "/Contents/PlugIns",
              "/Contents/MacOS", "/Contents/_CodeSignature/CodeEntitlements",
              "/Contents/Library/LaunchAgents", "/Contents/Library/LaunchAgents/job.plist"})
            for (const auto rights : {perms::none, perms::owner_read}) {
                const auto place = volume.host(own.string() + part);
                if (rights != perms::none && !std::filesystem::is_directory(place)) continue;
                std::filesystem::permissions(place, rights);
                EXPECT_TRUE(isNamed()) << part;
                std::filesystem::permissions(place, perms::owner_all);
            }
        EXPECT_FALSE(isNamed());
        for (const auto& [part, damaged, whole] :
             {std::tuple("/MacOS/Own", std::string(), std::string("#!")),
              std::tuple("/MacOS/Own", std::string("\xcf\xfa\xed\xfe"), std::string("#!")),
              std::tuple("/_CodeSignature/CodeEntitlements", groups.substr(0, 60), groups),
              std::tuple("/_CodeSignature/CodeEntitlements", std::string(), groups)}) {
            volume.write(contents + part, damaged);
            EXPECT_TRUE(isNamed()) << part;
            volume.write(contents + part, whole);
        }
        EXPECT_FALSE(isNamed());
        std::filesystem::remove(volume.host(contents + "/MacOS/Own"));
        EXPECT_TRUE(isNamed());
        volume.write(contents + "/MacOS/Own", "#!");
        volume.write(contents + "/PlugIns/W.appex/Contents/Info.plist", "?");
        EXPECT_TRUE(isNamed());
    });
}

TEST_F(InstalledBundlesTest, MissesWhatLinksToAnAbsentDiskLeadTo) {
    volume.makeFolder("/Applications");
    const Path links[] = {Path("/Applications/Maker/Suite"), Path("/Users/alice/Applications"),
                          Path("/Users/bob"), Path("/Users/Shared/Apps"), Path("/opt/apps")};
    for (const auto& link : links) {
        volume.makeFolder(link.parent().string());
        volume.link(link.string(), "/Volumes/Away/Suite");
    }
    // An application deleted from this disk does not count.
    volume.makeFolder("/Users/carol");
    volume.write("/usr/local/other", "x");
    volume.link("/Applications/Gone.app", "/opt/Gone.app");
    volume.link("/Applications/Chain.app", "Gone.app");
    volume.link("/Applications/Tool", "/usr/local/tool/Tool.app");
    volume.link("/Users/carol/Applications", "../carol/none");
    volume.makeFolder("/opt/homebrew/bin");
    volume.link("/opt/homebrew/bin/tool", "../Cellar/tool/1.0/bin/tool");
    EXPECT_THAT(look()->coverage().unreadable, testing::UnorderedElementsAreArray(links));
}

TEST_F(InstalledBundlesTest, SaysWhatItCouldNotSee) {
    EXPECT_FALSE(look()->coverage().seesApplications);
    EXPECT_THAT(look()->coverage().absent, testing::ElementsAre(Path("/Applications")));
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
    volume.makeFolder("/Users/alice/Applications/1/2/3/4/5/6/7/8/9/10/11/12");
    EXPECT_THAT(look()->coverage().uncounted, testing::ElementsAre(Path("/Users/alice/Downloads")));
    volume.makeFolder("/Users/alice/Applications/1/2/3/4/5/6/7/8/9/10/11/12/Any.app");
    EXPECT_THAT(look()->coverage().uncounted,
                testing::ElementsAre(Path("/Users/alice/Applications"), Path("/Users/alice/Downloads")));

    volume.makeFolder("/Applications/Closed");
    volume.makeFolder("/Users/bob/Library/Services");
    test::giveToUnprivileged(volume.hostRoot());
    test::asUnprivileged([&] {
        std::filesystem::permissions(volume.hostRoot() / "Applications/Closed", {});
        std::filesystem::permissions(volume.hostRoot() / "Users/bob/Library/Services", {});
        const auto part = look();
        EXPECT_THAT(part->coverage().unreadable,
                    testing::ElementsAre(Path("/Applications/Closed"), Path("/Users/bob/Library/Services")));
        EXPECT_FALSE(part->coverage().seesApplications);
    });
}

/// Times so old that no clock resolution could hide a later change.
void age(const test::TemporaryVolume& volume) {
    namespace fs = std::filesystem;
    for (const auto& each : fs::recursive_directory_iterator(volume.hostRoot()))
        fs::last_write_time(each, fs::file_time_type::clock::now() - std::chrono::hours(1));
}

TEST(InstalledBundlesAgain, ReadsOnlyWhatHasChanged) {
    test::TemporaryVolume volume;
    test::WatchedFiles files(volume.files());
    const FileCodeSignatures signatures(files);
    InstalledBundles bundles(files, signatures, test::alice());
    const std::string owners = "/Applications/Maker", ferry = owners + "/Ferry.app";
    const auto writeFerry = [&](const std::string& identifier) {
        writeBundle(volume, ferry, identifier, "Ferry");
    };
    writeFerry("com.example.ferry");
    writeBundle(volume, owners + "/Raft.app", "com.example.raft", "Raft");
    writeBundle(volume, owners + "/Raft.app/Contents/Helpers/In.app", "com.example.in", "In");
    const auto look = [&] {
        const auto snapshot = bundles.look(InstalledBundles::Reach::further);
        snapshot->readAllContents({});
        return snapshot;
    };
    const auto idsOf = [](const BundleSnapshot& snapshot) {
        return eachOf(snapshot.bundles(), &OwningBundle::bundleID);
    };
    const auto readTwice = [&] { // a file written just now may still change unnoticed
        look();
        files.takeReads();
        look();
        return files.takeReads();
    };
    const Path ferrysInfo(ferry + "/Contents/Info.plist");
    const Path innerInfo(owners + "/Raft.app/Contents/Helpers/In.app/Contents/Info.plist");
    EXPECT_THAT(readTwice(), testing::Contains(ferrysInfo));

    age(volume);
    const auto first = look();
    files.takeReads();
    const auto second = look();
    const auto reads = files.takeReads();
    EXPECT_FALSE(reads.contains(ferrysInfo) || reads.contains(innerInfo) || reads.contains(Path(owners)));
    EXPECT_EQ(second->bundles(), first->bundles());
    EXPECT_EQ(second->contents(1), first->contents(1));
    const auto only = InstalledBundles(files, signatures, test::alice(), InstalledBundles::Looks::once)
                          .look(InstalledBundles::Reach::further);
    EXPECT_EQ(only->contents(1), first->contents(1));
    EXPECT_EQ(files.takeReads().count(Path(owners + "/Raft.app/Contents/Info.plist")), 1u);

    const std::pair<const char*, std::function<void()>> changes[] = {
        {"com.example.newer", [&] { writeFerry("com.example.newer"); }},
        {"com.example.swapped",
         [&] { // as an update does, with the times from its archive
             std::filesystem::rename(volume.host(ferry), volume.host("/Old"));
             writeFerry("com.example.swapped");
             age(volume);
         }}};
    for (const auto& [identifier, change] : changes) {
        change();
        EXPECT_THAT(idsOf(*look()), testing::Contains(identifier));
    }
    look();
    files.takeReads();
    writeBundle(volume, innerInfo.parent().parent().string(), "com.example.inmost", "In");
    EXPECT_THAT(look()->contents(1).embeddedIDs, testing::ElementsAre("com.example.inmost"));
    EXPECT_FALSE(files.takeReads().contains(ferrysInfo));
    std::filesystem::remove_all(volume.host(ferry));
    EXPECT_THAT(idsOf(*look()), testing::ElementsAre("com.example.raft"));
}

TEST_F(InstalledBundlesTest, ClaimsToHaveCountedNothingThatItsBudgetHides) {
    for (const auto* name : {"A", "B", "C"})
        writeBundle(volume, "/Applications/" + std::string(name) + ".app", "com.example.app", name);
    const auto lookWith = [&](std::int64_t bytes) {
        return InstalledBundles(volume.files(), signatures, test::alice(), InstalledBundles::Looks::many,
                                {.bytes = bytes})
            .look(InstalledBundles::Reach::further);
    };
    const auto isCut = [](const BundleSnapshot& snapshot) {
        return !snapshot.coverageWithContents().isComplete();
    };
    const auto atOnce = lookWith(1);
    EXPECT_TRUE(isCut(*atOnce));
    EXPECT_FALSE(atOnce->coverage().seesApplications);

    const auto size = std::filesystem::file_size(volume.host("/Applications/A.app/Contents/Info.plist"));
    const auto inContents = lookWith(static_cast<std::int64_t>(3 * size + 1));
    EXPECT_TRUE(inContents->coverage().isComplete());
    inContents->readAllContents({});
    EXPECT_TRUE(isCut(*inContents));
    EXPECT_FALSE(inContents->contents(2).isComplete && inContents->contents(1).isComplete
                 && inContents->contents(0).isComplete);
}

} // namespace
} // namespace tidwen
