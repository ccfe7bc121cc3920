#include "sweep/orphan_scanner.h"

#include "inventory/installed_applications.h"
#include "support/fixtures.h"
#include "sweep/known_owners.h"
#include "volume/volume_sources.h"

#include <gmock/gmock.h>

namespace tidwen {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* home = "/Users/alice/Library/";

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
    std::vector<std::string> owners(const OrphanScanResult& result) {
        std::vector<std::string> ids;
        for (const auto& group : result.groups)
            ids.push_back(group.bundleID);
        std::sort(ids.begin(), ids.end());
        return ids;
    }

    test::TemporaryVolume volume;
    test::RecordingLog log;
    std::string registered;
    std::size_t streamed = 0;
};

TEST_F(OrphanScan, GathersWhatOneGoneApplicationLeft) {
    volume.write(std::string(home) + "Preferences/com.gone.ferry.plist", "x");
    volume.write(std::string(home)
                     + "Preferences/ByHost/com.gone.ferry.8F0C2A71-5B0E-5C1C-9C55-0D6E0A7F2B11.plist",
                 "x");
    volume.write(std::string(home) + "Caches/com.gone.ferry.helper/data", std::string(9000, 'x'));
    volume.write(std::string(home) + "Group Containers/ABCDE12345.com.gone.ferry/x", "x");
    volume.write(std::string(home) + "Application Support/Gone Inc/com.gone.ferry/x", "x");
    volume.write(std::string(home) + "LaunchAgents/whatever.plist",
                 job("com.gone.ferry.sync", "/Applications/Old Ferry.app/Contents/MacOS/sync"));
    volume.write("/private/var/db/receipts/com.gone.ferry.bom", "x");
    const auto result = scan();
    ASSERT_THAT(owners(result), ElementsAre("com.gone.ferry"));
    EXPECT_EQ(result.groups[0].name, "Old Ferry");
    EXPECT_EQ(result.groups[0].traces.size(), 7u);
    EXPECT_GT(result.groups[0].bytes(), 9000);
    EXPECT_EQ(streamed, 6u); // a receipt waits for what else there is
}

TEST_F(OrphanScan, LeavesAloneWhatAnybodyCouldClaim) {
    test::writeBundle(volume, "/Applications/Marlin.app", "com.marlin.notes", "Marlin");
    test::writeBundle(volume, "/Applications/Marlin.app/Contents/PlugIns/Share.appex", "org.capture.share",
                      "Share");
    // Wherever it is installed, and whatever it is.
    test::writeBundle(volume, "/Applications/A/B/C/Deep.app", "com.deep.tool", "Deep");
    test::writeBundle(volume, "/Applications/.Hidden.app", "com.hidden.tool", "Hidden");
    test::writeBundle(volume, "/opt/Linked.app", "com.linked.tool", "Linked");
    volume.link("/Applications/Linked.app", "/opt/Linked.app");
    test::writeBundle(volume, "/Users/bob/Applications/Bobs.app", "com.bobs.tool", "Bobs");
    test::writeBundle(volume, "/Users/alice/Desktop/Renamed 2.app", "com.renamed.tool", "Renamed");
    test::writeBundle(volume, "/Library/Audio/Plug-Ins/VST3/Synth.vst3", "com.synth.plugin", "Synth");
    test::writeBundle(volume, "/Library/Application Support/Daily/Daily Update.app", "com.daily.update",
                      "Daily");
    for (const auto* owner : {"com.deep.tool", "com.hidden.tool", "com.linked.tool", "com.bobs.tool",
                              "com.renamed.tool", "com.synth.plugin", "com.daily.update"})
        volume.write(std::string(home) + "Preferences/" + owner + ".plist", "x");
    volume.write(std::string(home) + "Containers/com.apple.mail/.com.apple.containermanagerd.metadata.plist",
                 writeXmlPropertyList(PropertyListDictionary{{"MCMMetadataIdentifier", "com.gone.liar"}}));
    volume.write("/Users/alice/Documents/com.gone.letters/x", "x");
    volume.link(std::string(home) + "WebKit", "../Documents");
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
        volume.write(std::string(home) + name, "x");
    volume.write("/usr/local/bin/serviced", "x");
    volume.write("/Library/LaunchDaemons/com.living.service.plist",
                 job("com.living.service", "/usr/local/bin/serviced"));
    volume.write("/private/var/db/receipts/com.tool.only.bom", "x"); // a receipt alone may be a tool's
    registered = "com.registered.app";
    EXPECT_THAT(owners(scan({"com.Protected.App"})), IsEmpty());
}

TEST_F(OrphanScan, StopsWhenAskedAndNamesUnreadableFolders) {
    volume.write(std::string(home) + "Preferences/com.gone.ferry.plist", "x");
    StopSource source;
    source.requestStop();
    EXPECT_THAT(scan({}, source.token()).groups, IsEmpty());
}

TEST(IdentifierInName, FindsReverseDnsOnly) {
    struct Case {
        const char *name, *identifier;
    };
    const Case cases[] = {
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
    for (const auto& c : cases)
        EXPECT_EQ(identifierInName(c.name), c.identifier) << c.name;
}

} // namespace
} // namespace tidwen
