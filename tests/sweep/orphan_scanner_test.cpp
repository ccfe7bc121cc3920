#include "base/path.h"
#include "base/stop_token.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "scan/matching/trace.h"
#include "sweep/known_owners.h"
#include "sweep/orphan_scan_fixture.h"
#include "sweep/orphan_scanner.h"
#include "sweep/reclaimed_finds.h"

#include <filesystem>
#include <functional>
#include <string>
#include <utility>

namespace tidwen {
namespace {

TEST_F(OrphanScan, GathersWhatOneGoneApplicationLeft) {
    volume.write(home + "Preferences/com.gone.ferry.plist", "x");
    volume.write(home + "Preferences/ByHost/com.gone.ferry.8F0C2A71-5B0E-5C1C-9C55-0D6E0A7F2B11.plist", "x");
    volume.write(home + "Caches/com.gone.ferry.helper/data", std::string(9000, 'x'));
    volume.write(home + "Group Containers/ABCDE12345.com.gone.ferry/x", "x");
    volume.write(home + "Application Support/Gone Inc/com.gone.ferry/x", "x");
    volume.write(home + "LaunchAgents/whatever.plist",
                 job("com.gone.ferry.sync", "/Applications/Old Ferry.app/Contents/MacOS/sync"));
    volume.write("/private/var/db/receipts/com.gone.ferry.bom", "x");
    const auto result = scan();
    ASSERT_THAT(result.groups, ElementsAre(Field(&OrphanGroup::bundleID, "com.gone.ferry")));
    EXPECT_EQ(result.groups[0].name, "Old Ferry");
    EXPECT_EQ(result.groups[0].traces.size(), 7u);
    EXPECT_GT(result.groups[0].bytes().bytes, 9000);
    EXPECT_EQ(streamed, 6u); // a receipt waits for what else there is
}

TEST_F(OrphanScan, KnowsTheNamesOfWhatPastRemovalsTook) {
    const Path run("/Users/alice/.Trash/Tidwen - Startup Items - 2026-11-21 10-11-12");
    const auto plist = home + "LaunchAgents/com.gone.ferry.plist";
    const auto taken = run / "job.plist";
    volume.write(taken.string(), job("com.gone.ferry", "/Applications/Old Ferry.app/Contents/MacOS/sync"));
    volume.write(home + "Preferences/com.gone.ferry.plist", "x");
    for (const auto* name : {"Old Ferry", "Tidepool", "Zander Studio", "Kept Secret"})
        volume.write(home + "Application Support/" + name + "/x", "x");
    test::writeBundle(volume, "/Applications/Zander Studio.app", "org.zander.studio", "Zander Studio");
    const Manifest manifest{
        .quarantineRoot = run,
        .apps = {{"com.gone.ferry", "com.gone.ferry"}, // no name: it was removed by its identifier
                 {"Tidepool", "com.maker.tide"},
                 {"Zander Studio", "org.zander.studio"},
                 {"Kept Secret", "com.kept.secret"}},
        .entries = {{.operationID = 1, .source = plist, .destination = taken.string(), .bundleID = ""}}};
    ASSERT_TRUE(writeManifest(manifest, run / manifestFileName, volume.files()));
    const auto groups = scan({"com.kept.secret"}).groups;
    EXPECT_THAT(eachOf(groups, &OrphanGroup::name), testing::UnorderedElementsAre("Old Ferry", "Tidepool"));
    for (const auto& group : groups)
        EXPECT_EQ(group.traces.back().displayName, home + "Application Support/" + group.name);
}

TEST_F(OrphanScan, GivesWhatBearsOnlyANameToTheOneGroupThatIsCalledSo) {
    test::writeBundle(volume, "/Applications/Zander Studio.app", "org.zander.studio", "Zander Studio");
    for (const auto* group :
         {"com.maker.tidepool", "com.other.tidemark", "net.third.tidemark", "com.lonely.zander",
          "com.kettle.desktop", "com.short.kip", "org.printer.manager"})
        volume.write(home + "Preferences/" + group + ".plist", "x");
    volume.write(home + "LaunchAgents/com.gone.ferry.plist",
                 job("com.gone.ferry", "/Applications/Old Ferry.app/Contents/MacOS/sync"));
    const std::pair<std::string, std::string> names[] = {
        {"Application Support/TidePool", "com.maker.tidepool"},
        {"Preferences/Tidepool.plist", "com.maker.tidepool"},
        {"Logs/Old Ferry.log", "com.gone.ferry"},
        {"Logs/DiagnosticReports/Old Ferry-2026-11-21-101112.ips", "com.gone.ferry"},
        {"Application Support/CrashReporter/Tidepool_8F0C2A71-5B0E-5C1C-9C55-0D6E0A7F2B11.plist",
         "com.maker.tidepool"},
        {"Caches/Kettle", "com.kettle.desktop"},
        {"Application Support/Tidemark", ""}, // ambiguous: two groups have this name
        {"Application Support/Zander", ""},   // may belong to Zander Studio
        {"Application Support/Kip", ""},
        {"Application Support/Manager", ""},
        {"Application Support/Nobody Else", ""},
        {"Fonts/Tidepool", ""},
    };
    for (const auto& [place, group] : names)
        volume.write(home + place + (place.ends_with("plist") || place.find("Logs/") == 0 ? "" : "/x"), "x");
    const auto groups = scan().groups;
    for (const auto& [place, owner] : names) {
        std::string claimedBy;
        for (const auto& group : groups)
            for (const auto& trace : group.traces)
                if (trace.displayName == home + place) {
                    claimedBy = group.bundleID;
                    EXPECT_EQ(trace.risk, TraceRisk::review) << place;
                }
        EXPECT_EQ(claimedBy, owner) << place;
    }
    EXPECT_THAT(eachOf(groups, &OrphanGroup::name),
                testing::IsSupersetOf({"Tidepool", "Old Ferry", "Kettle"}));
}

TEST_F(OrphanScan, TakesALooseFormForAnIdentifierOnlyWithAnotherSign) {
    test::writeBundle(volume, "/Applications/Lives.app", "seb.Lives", "Any Name");
    for (const auto* identifier : {"seb.GlacierMac", "seb.Lives", "protected.Tool"})
        for (const auto* place : {"Saved Application State/%.savedState/x", "Preferences/%.plist"}) {
            std::string path = place;
            volume.write(home + path.replace(path.find('%'), 1, identifier), "x");
        }
    volume.write(home + "Saved Application State/once.Only.savedState/x", "x");
    volume.write(home + "Preferences/notes.backup.plist", "x"); // twice, but never named by macOS itself
    volume.write(home + "Caches/notes.backup/x", "x");
    EXPECT_THAT(eachOf(scan({"protected.tool"}).groups, &OrphanGroup::bundleID),
                ElementsAre("seb.glaciermac"));
}

TEST_F(OrphanScan, SearchesAFolderWithTwoNamesOnceAndNamesWhatItSkips) {
    volume.write(home + "Caches/com.gone.ferry/x", "x");
    volume.write(home + "Caches/com.gone.\xff/x", "x");
    volume.link(home + "HTTPStorages", "Caches");
    volume.link(home + "WebKit", "/Volumes/Away");
    const auto result = scan();
    EXPECT_THAT(result.unreadableLocations, ElementsAre(Path(home + "WebKit")));
    ASSERT_EQ(result.groups.size(), 1u);
    EXPECT_EQ(result.groups[0].traces.size(), 1u);
    EXPECT_THAT(result.skippedNames, ElementsAre(Path(home + "Caches/com.gone.\xff")));
}

TEST_F(OrphanScan, ClaimsNothingByWhatAScanDoesNotTakeForAnIdentifier) {
    for (const auto* left : {"Preferences/com.exam.service.plist", "Caches/com.exam.db/x",
                             "Application Support/com.foo.bundle/x", "Group Containers/group.com.foo.ttf/x",
                             "Preferences/com.gone.ferry.plist"})
        volume.write(home + left, "x");
    EXPECT_THAT(orphans(), ElementsAre("com.gone.ferry"));
}

TEST_F(OrphanScan, StopsWhenAsked) {
    volume.write(home + "Preferences/com.gone.ferry.plist", "x");
    StopSource source;
    source.requestStop();
    EXPECT_THAT(scan({}, source.token()).groups, IsEmpty());
}

TEST(IdentifierInName, FindsReverseDnsOnly) {
    const std::pair<const char*, const char*> cases[] = {
        {"com.Example.App.plist", "com.example.app"},
        {"com.example.app.savedState", "com.example.app"},
        {"com.example.app.sfl4", "com.example.app"},
        {"ABCDE12345.com.example.app", "com.example.app"},
        {"group.com.example.app", "com.example.app"},
        {"com.example", ""},
        {"com..app", ""},
        {"com.example.app name", ""},
        {"photo.backup.2024.jpg", ""},
        {"", ""},
    };
    for (const auto& [name, identifier] : cases)
        EXPECT_EQ(identifierInName(name), identifier) << name;
}

TEST_F(OrphanScan, JudgesItsFindsAgainByTheOwnersOfThatMoment) {
    const auto writeOther = [&](const std::string& id) {
        test::writeBundle(volume, "/Applications/Other.app", id, "Other");
    };
    const std::string gravel = "com.gravelworks.gravel";
    const struct {
        std::function<void()> change;
        std::string why; ///< empty: nothing is claimed
    } cases[] = {
        {[] {}, ""},
        {[&] { writeOther(gravel); }, "failure.claimedSince %@ %@ " + gravel},
        {[&] { writeOther("com.GravelWorks.Gravel"); }, "failure.claimedSince %@ %@ com.GravelWorks.Gravel"},
        {[&] { writeOther("com.gravelworks.sand"); }, "failure.claimedSince %@ %@ com.gravelworks.sand"},
        {[&] {
             writeOther("org.other.other");
             test::writeBundle(volume, "/Applications/Other.app/Contents/Helpers/H.app", gravel, "H");
         },
         "failure.claimedSince %@ %@ org.other.other"},
        {[&] { registered.identifiers = {gravel}; }, "failure.inUseSince"},
        {[&] { std::filesystem::remove_all(volume.host("/Applications")); }, "gap"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.why);
        volume.makeFolder("/Applications");
        volume.write(home + "Caches/" + gravel + "/data", "x");
        volume.write(home + "Preferences/" + gravel + ".plist", "x");
        const auto found = scan();
        ASSERT_EQ(found.groups.size(), 1u);
        const auto& traces = found.groups[0].traces;
        each.change();
        const auto reclaimed = scanner.reclaimed(installed, {{gravel, traces}}, {});
        EXPECT_EQ(reclaimed.size(), each.why.empty() ? 0 : traces.size());
        for (const auto& [trace, why] : reclaimed)
            EXPECT_EQ(!why.key.starts_with("failure.") ? "gap"
                      : why.arguments.empty()          ? why.key
                                                       : why.key + " " + why.arguments[0].text(),
                      each.why);
        registered.identifiers.clear();
        std::filesystem::remove_all(volume.host("/Applications"));
    }
}

} // namespace
} // namespace tidwen
