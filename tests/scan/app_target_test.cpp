#include "base/path.h"
#include "base/property_list.h"
#include "scan/applications/app_target.h"
#include "scan/applications/launch_item.h"

#include "platform/code_signatures.h"
#include "scan/applications/bundle.h"
#include "scan/applications/installed_app.h"
#include "support/fixtures.h"
#include "support/matchers.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using Dictionary = PropertyListDictionary;
using Array = PropertyListArray;
using Error = AppTargetLoaderError;
using test::writeBundle;
using namespace std::string_literals;

/// Returns a fixed signature and records which executable was read.
class FixedSignature : public CodeSignatures {
  public:
    CodeSignature read(const Path&, const Path& executable) const override {
        asked = executable;
        return answer;
    }
    CodeSignature answer;
    mutable Path asked;
};

class AppTargets : public testing::Test {
  protected:
    tl::expected<AppTarget, Error> load(const std::string& path) const {
        return AppTargetLoader(volume.files(), signatures).load(Path(path));
    }
    std::optional<Error> refusal(const std::string& path) const {
        const auto target = load(path);
        return target ? std::nullopt : std::optional(target.error());
    }
    test::TemporaryVolume volume;
    FixedSignature signatures;
};

TEST_F(AppTargets, ReadsEverythingThatDescribesAnApplication) {
    const Path app("/Applications/Marlin Notes.APP"), library = app / "Contents/Library";
    writeBundle(volume, app.string(),
                {{"CFBundleIdentifier", "com.Example.Marlin"},
                 {"CFBundleName", "Marlin"},
                 {"CFBundleDisplayName", "Marlin Notes"},
                 {"CFBundleShortVersionString", "2.1"},
                 {"CFBundleExecutable", "MarlinNotes"}});
    const LaunchItem agent{"com.example.agent", library / "LaunchAgents/a.plist", false, {}};
    const LaunchItem daemon{"com.example.daemon", library / "LaunchDaemons/d.plist", true, {}};
    for (const auto& job : {agent, daemon})
        volume.write(job.plist.string(), writeXmlPropertyList(Dictionary{{"Label", job.label}}));
    for (const char* item : {"/LoginItems/z.app", "/LoginItems/b.App", "/LoginItems/c.xpc"})
        writeBundle(volume, library.string() + item, std::string("com.example.") + item[12], "Helper");
    signatures.answer = {"TEAM123456", {"group.com.example.b", "TEAM123456.a"}};

    const AppTarget expected{app,
                             "com.Example.Marlin",
                             "Marlin Notes",
                             "TEAM123456",
                             "2.1",
                             "MarlinNotes",
                             signatures.answer.applicationGroups,
                             {agent, daemon},
                             {"com.example.b", "com.example.z"}};
    EXPECT_EQ(load(app.string() + "/"), expected);
    EXPECT_EQ(signatures.asked, app / "Contents/MacOS/MarlinNotes");
}

TEST_F(AppTargets, RefusesWhatMustNeverBeATarget) {
    for (const char* place : {"/Applications/Good.app", "/usr/local/Tool.app", "/System/Tool.app",
                              "/BIN/Tool.app", "/usrlocal/Tool.app"})
        writeBundle(volume, place, "com.example.tool", "Tool");
    writeBundle(volume, "/Applications/Apple.app", "COM.APPLE.Thing", "Apple");
    writeBundle(volume, "/Applications/Self.app", "com.Corvella.Tidwen", "Self");
    writeBundle(volume, "/Applications/Empty.app", "", "Empty");
    volume.makeFolder("/Applications/Folder.app");
    volume.write("/Applications/File.app", "x");
    volume.link("/Applications/Dangling.app", "/../../../../../../etc");
    volume.link("/Applications/Loop.app", "Loop.app");
    volume.link("/Applications/Link.app", "Good.app");
    volume.link("/Applications/Linked", "/System");
    const std::pair<std::optional<Error>, std::vector<std::string>> cases[] = {
        {std::nullopt, {"/Applications/Link.app", "/usrlocal/Tool.app"}},
        {Error::notAnApplication, {"/Applications/Good.app/Contents", "/Applications/.app"}},
        {Error::unreadableBundle,
         {"/Applications/File.app", "/Applications/Missing.app", "/Applications/Dangling.app",
          "/Applications/Loop.app", "Applications/Good.app", "/Applications\0/../Good.app"s,
          "/Applications/G\xf6od.app"}},
        {Error::missingBundleIdentifier, {"/Applications/Folder.app", "/Applications/Empty.app"}},
        {Error::systemApplication,
         {"/Applications/Apple.app", "/usr/local/Tool.app", "/Applications/../System/Tool.app",
          "/BIN/Tool.app", "/Applications/Linked/Tool.app"}},
        {Error::selfTarget, {"/Applications/Self.app"}}};
    for (const auto& [expected, paths] : cases)
        for (const auto& path : paths)
            EXPECT_EQ(refusal(path), expected) << path;
}

TEST_F(AppTargets, AnUnreadableInfoDictionaryHasNoIdentifier) {
    const std::string app = "/Applications/Bad.app", info = app + "/Contents/Info.plist";
    const auto good = writeXmlPropertyList(Dictionary{{"CFBundleIdentifier", "com.example.app"}});
    // The third is a list that contains itself.
    for (const auto& bytes :
         {good.substr(0, good.size() / 2), writeXmlPropertyList(Array{"CFBundleIdentifier"}),
          "bplist00\xa1\0\x08\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x01\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x0a"s,
          writeXmlPropertyList(Dictionary{{"CFBundleIdentifier", 7}}),
          writeBinaryPropertyList(Dictionary{{"CFBundleIdentifier", "com.other.app\0.x"s}})}) {
        volume.write(info, bytes);
        EXPECT_EQ(refusal(app), Error::missingBundleIdentifier) << bytes;
    }
    volume.write(info, good);
    EXPECT_EQ(refusal(app), std::nullopt);
    std::filesystem::resize_file(volume.host(info), 100'000'000);
    EXPECT_EQ(refusal(app), Error::missingBundleIdentifier);
}

TEST_F(AppTargets, ValuesOfOtherTypesCountAsAbsent) {
    const std::string app = "/Applications/Odd.Name.app";
    writeBundle(volume, app,
                {{"CFBundleIdentifier", "com.example.odd"},
                 {"CFBundleDisplayName", 1},
                 {"CFBundleName", Array{}},
                 {"CFBundleShortVersionString", 2.5},
                 {"CFBundleExecutable", true},
                 {"LSApplicationCategoryType", 3},
                 {"SMPrivilegedExecutables", "com.example.tool"}});
    volume.write(app + "/Contents/Library/LoginItems", "no folder");
    EXPECT_EQ(load(app),
              (AppTarget{.bundleURL = Path(app), .bundleID = "com.example.odd", .name = "Odd.Name"}));
    EXPECT_TRUE(embeddedBundleIDs(volume.files(), Path(app)).empty());
    EXPECT_EQ(makeInstalledApp(volume.files(), signatures, Path(app))->category, std::nullopt);
    writeBundle(volume, app, {{"CFBundleIdentifier", "com.example.odd"}, {"CFBundleDisplayName", ""}});
    EXPECT_EQ(load(app)->name, "");
}

TEST_F(AppTargets, TheExecutableLiesWhereTheShapeOfTheBundleSays) {
    const auto write = [&](const std::string& folder, const char* executable) {
        const Dictionary info{{"CFBundleIdentifier", "com.example.shape"},
                              {"CFBundleExecutable", executable}};
        volume.write(folder + "/Info.plist", writeXmlPropertyList(info));
    };
    const auto executable = [&](const std::string& app) {
        return load(app) ? signatures.asked.string() : "refused";
    };
    for (const char* name : {"../../../Other.app/Contents/MacOS/Other", "..", ".", "", "a/b", "/bin/sh"}) {
        write("/Evil.app/Contents", name);
        EXPECT_EQ(executable("/Evil.app"), "/Evil.app/Contents/MacOS/Evil") << name;
    }
    write("/Flat.app", "Phone");
    EXPECT_EQ(executable("/Flat.app"), "/Flat.app/Phone");
    write("/Store.app/Wrapper/Phone.app", "Phone");
    volume.link("/Store.app/WrappedBundle", "Wrapper/Phone.app");
    EXPECT_EQ(executable("/Store.app"), "/Store.app/WrappedBundle/Phone");
    volume.link("/Thief.app/WrappedBundle", "/Flat.app");
    EXPECT_EQ(executable("/Thief.app"), "refused");
}

TEST_F(AppTargets, EmbeddedBundlesAreFoundAtEveryDepthButNotInFrameworks) {
    const std::string app = "/Applications/Suite.app", contents = app + "/Contents";
    writeBundle(volume, app,
                {{"CFBundleIdentifier", "com.example.suite"},
                 {"SMPrivilegedExecutables", Dictionary{{"com.example.suite.root", "anchor"}}}});
    for (const std::string inner : {"/Library/LoginItems/start.app", "/PlugIns/share.appex",
                                    "/PlugIns/share.appex/Contents/XPCServices/deep.xpc",
                                    "/Frameworks/helper.app", "/Frameworks/e.framework/Helpers/engine.app",
                                    "/Resources/helper.app", "/Library/SystemExtensions/net.systemextension"})
        writeBundle(volume, contents + inner, "com.example." + Path(inner).stem(), "x");
    writeBundle(volume, contents + "/Resources/Apple.app", "com.Apple.borrowed", "x");
    writeBundle(volume, "/Applications/Other.app", "com.example.other", "Other");
    volume.link(contents + "/Helpers/Other.app", "/Applications/Other.app");
    EXPECT_EQ(embeddedBundleIDs(volume.files(), Path(app)),
              (std::vector<std::string>{"com.example.deep", "com.example.helper", "com.example.net",
                                        "com.example.share", "com.example.start", "com.example.suite.root"}));

    std::string place = "/Applications/Nest.app";
    for (int depth = 0; depth < 12; ++depth, place += "/Contents/Helpers/N.app")
        writeBundle(volume, place, "com.example.n" + std::to_string(depth), "N");
    EXPECT_EQ(embeddedBundleIDs(volume.files(), Path("/Applications/Nest.app")).size(), 6u);
}

TEST_F(AppTargets, LaunchItemsHaveLabelAndProgram) {
    const PropertyListValue label("j");
    const std::pair<PropertyListValue, std::optional<std::string>> jobs[] = {
        {Dictionary{{"Label", label}, {"Program", "/a"}, {"ProgramArguments", Array{"/b"}}}, "/a"},
        {Dictionary{{"Label", label}, {"Program", 1}, {"ProgramArguments", Array{"/b", "-v"}}}, "/b"},
        {Dictionary{{"Label", label}, {"ProgramArguments", Array{}}}, std::nullopt},
        {Dictionary{{"Label", label}, {"ProgramArguments", Array{"/b", 1}}}, std::nullopt}};
    const PropertyListValue others[] = {Dictionary{{"Label", ""}}, Dictionary{{"Label", 4}},
                                        Dictionary{{"Program", "/a"}}, Array{"Label", "j"}};
    const Path file("/Library/LaunchDaemons/job.plist");
    const auto read = [&](const PropertyListValue& list) {
        volume.write(file.string(), writeBinaryPropertyList(list));
        return readLaunchItem(volume.files(), file, true);
    };
    for (const auto& [list, program] : jobs)
        EXPECT_EQ(read(list), (LaunchItem{"j", file, true, program}));
    for (const auto& list : others)
        EXPECT_EQ(read(list), std::nullopt) << writeXmlPropertyList(list);
}

TEST_F(AppTargets, LaunchItemsAreTheVisiblePropertyListsOfAFolder) {
    const auto job = [](const char* label) { return writeXmlPropertyList(Dictionary{{"Label", label}}); };
    for (const char* file : {"b.PLIST", "a.plist", ".hidden.plist", "c.plist.bak", "deep/d.plist"})
        volume.write(std::string("/jobs/") + file, job(file));
    volume.write("/jobs/cut.plist", job("cut").substr(0, 120));
    volume.makeFolder("/jobs/folder.plist");
    volume.link("/jobs/dangling.plist", "/nowhere");

    EXPECT_THAT(eachOf(listLaunchItems(volume.files(), Path("/jobs"), false), &LaunchItem::label),
                ElementsAre("a.plist", "b.PLIST"));
}

TEST_F(AppTargets, BackgroundApplicationsSayItInManyWays) {
    const Path app("/Applications/Agent.app");
    const auto isAgent = [&](const char* key, const PropertyListValue& value) {
        writeBundle(volume, app.string(), {{"CFBundleIdentifier", "com.example.agent"}, {key, value}});
        return makeInstalledApp(volume.files(), signatures, app)->isBackgroundAgent;
    };
    for (const PropertyListValue& value : Array{true, 1, 2.5, "YES", "1", "true"})
        EXPECT_TRUE(isAgent("LSUIElement", value) && isAgent("LSBackgroundOnly", value));
    for (const PropertyListValue& value : Array{false, 0, 0.0, "no", "2", Array{true}})
        EXPECT_FALSE(isAgent("LSUIElement", value) || isAgent("LSBackgroundOnly", value));
}

} // namespace
} // namespace tidwen
