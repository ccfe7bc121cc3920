#include "sweep/orphan_scanner.h"

#include "inventory/installed_applications.h"
#include "platform/budgeted_files.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "sweep/known_owners.h"
#include "volume/volume_sources.h"

namespace tidwen {
namespace {

const std::string home = "/Users/alice/Library/";

std::string job(const std::string& label, const std::string& program) {
    return writeXmlPropertyList(PropertyListDictionary{{"Label", label}, {"Program", program}});
}

class OrphanScan : public testing::Test {
  protected:
    OrphanScanResult scan(const std::set<std::string>& protectedIDs = {}, const StopToken& stop = {}) {
        const FileCodeSignatures signatures(volume.files());
        const VolumeRunningApplications running;
        OrphanScanner scanner({volume.files(), signatures, running, log}, test::alice(),
                              [this](const std::string& id) { return id == registered; });
        return scanner.scan(findOwningBundles(volume.files(), test::alice()), protectedIDs, stop,
                            [this](const std::vector<Trace>& found) { streamed += found.size(); });
    }

    test::TemporaryVolume volume;
    test::RecordingLog log;
    std::string registered;
    std::size_t streamed = 0;
};

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
    EXPECT_GT(result.groups[0].bytes(), 9000);
    EXPECT_EQ(streamed, 6u); // a receipt waits for what else there is
}

TEST_F(OrphanScan, LeavesAloneWhatAnybodyCouldClaim) {
    test::writeBundle(volume, "/Applications/Marlin.app", "com.marlin.notes", "Marlin");
    test::writeBundle(volume, "/Applications/Marlin.app/Contents/PlugIns/S.appex", "org.capture.share", "S");
    const std::pair<const char*, std::string> owners[] = {
        // Wherever it is installed, and whatever it is.
        {"/Applications/A/B/C/Deep.app", "com.deep.tool"},
        {"/Applications/.Hidden.app", "com.hidden.tool"},
        {"/opt/Linked.app", "com.linked.tool"},
        {"/Users/bob/Applications/Bobs.app", "com.bobs.tool"},
        {"/Users/alice/Desktop/Renamed 2.app", "com.renamed.tool"},
        {"/Library/Audio/Plug-Ins/VST3/Synth.vst3", "com.synth.plugin"},
        {"/Library/Application Support/Daily/Daily Update.app", "com.daily.update"}};
    for (const auto& [bundle, owner] : owners) {
        test::writeBundle(volume, bundle, owner, "Any Name");
        volume.write(home + "Preferences/" + owner + ".plist", "x");
    }
    volume.link("/Applications/Linked.app", "/opt/Linked.app");
    volume.write(home + "Containers/com.apple.mail/.com.apple.containermanagerd.metadata.plist",
                 writeXmlPropertyList(PropertyListDictionary{{"MCMMetadataIdentifier", "com.gone.liar"}}));
    volume.write("/Users/alice/Documents/com.gone.letters/x", "x");
    volume.link(home + "WebKit", "../Documents");
    const char* names[] = {
        "Preferences/com.marlin.notes.plist",          // the application's own
        "Caches/com.github.Electron.ShipIt/x",         // many applications'
        "Preferences/com.marlin.old.plist",            // its maker's
        "Preferences/org.capture.share.plist",         // embedded
        "Preferences/group.org.capture.share.x.plist", // continues it
        "Preferences/net.someone.marlin.plist",        // carries its name
        "Preferences/com.apple.finder.plist",          // Apple's
        "Preferences/org.cups.PrintingPrefs.plist",    // Apple's under another name
        "Preferences/com.corvella.tidwen.plist",       // ours
        "Preferences/loginwindow.plist",               // no identifier
        "Preferences/some.thing.else.plist",           // begins with no domain
        "Preferences/com.two.plist",                   // too short to tell
        "Caches/Gone Application/x",                   // a name alone
        "Preferences/com.protected.app.plist",
        "Preferences/com.registered.app.helper.plist",
        "Preferences/com.living.service.plist",
        "Application Support/com.apple.sharedfilelist/com.gone.thing/x",
    };
    for (const auto* name : names)
        volume.write(home + name, "x");
    volume.write("/usr/local/bin/serviced", "x");
    volume.write("/Library/LaunchDaemons/com.living.service.plist",
                 job("com.living.service", "/usr/local/bin/serviced"));
    volume.write("/private/var/db/receipts/com.tool.only.bom", "x"); // a receipt alone may be a tool's
    registered = "com.registered.app";
    EXPECT_THAT(scan({"com.Protected.App"}).groups, IsEmpty());
}

TEST_F(OrphanScan, ClaimsNothingWhenNotAllApplicationsCouldBeRead) {
    volume.write(home + "Preferences/com.gone.ferry.plist", "x");
    test::writeBundle(volume, "/Applications/Marlin.app", "com.marlin.notes", "Marlin");
    const BudgetedFiles files(volume.files(), ReadBudget({.bytes = 10}));
    const FileCodeSignatures signatures(volume.files());
    const VolumeRunningApplications running;
    OrphanScanner scanner({files, signatures, running, log}, test::alice(),
                          [](const auto&) { return false; });
    const auto result = scanner.scan(findOwningBundles(volume.files(), test::alice()), {});
    EXPECT_THAT(result.groups, IsEmpty());
    EXPECT_GT(result.leftOut, 0u);
}

TEST_F(OrphanScan, SearchesAFolderWithTwoNamesOnceAndNamesWhatItSkips) {
    volume.write(home + "Caches/com.gone.ferry/x", "x");
    volume.write(home + "Caches/com.gone.\xff/x", "x");
    volume.link(home + "HTTPStorages", "Caches");
    const auto result = scan();
    ASSERT_EQ(result.groups.size(), 1u);
    EXPECT_EQ(result.groups[0].traces.size(), 1u);
    EXPECT_THAT(result.skippedNames, ElementsAre(Path(home + "Caches/com.gone.\xff")));
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

} // namespace
} // namespace tidwen
