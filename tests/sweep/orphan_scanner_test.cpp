#include "sweep/orphan_scanner.h"

#include "platform/budgeted_files.h"
#include "platform/file_code_signatures.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/unprivileged.h"
#include "volume/volume_sources.h"

namespace tidwen {
namespace {

const std::string home = "/Users/alice/Library/";

std::string job(const std::string& label, const std::string& program) {
    return writeXmlPropertyList(PropertyListDictionary{{"Label", label}, {"Program", program}});
}

class ListedReceipts : public Receipts {
  public:
    std::vector<std::string> packageIDs() const override {
        std::vector<std::string> identifiers;
        for (const auto& [identifier, files] : packages)
            identifiers.push_back(identifier);
        return identifiers;
    }
    std::optional<Receipt> read(const std::string& packageID) const override {
        return Receipt{packageID, Path("/"), packages.at(packageID)};
    }
    std::map<std::string, std::vector<std::string>> packages;
};

class OrphanScan : public testing::Test {
  protected:
    OrphanScan() { volume.makeFolder("/Applications"); }

    OrphanScanResult scan(const std::set<std::string>& protectedIDs = {}, const StopToken& stop = {}) {
        const FileCodeSignatures signatures(volume.files());
        const VolumeRunningApplications running;
        InstalledBundles installed(volume.files(), signatures, test::alice());
        OrphanScanner scanner({volume.files(), receipts, running, log}, test::alice(),
                              [this](const std::string& id) { return id == registered; });
        return scanner.scan(installed, protectedIDs, stop,
                            [this](const std::vector<Trace>& found) { streamed += found.size(); });
    }

    std::vector<std::string> orphans() { return eachOf(scan().groups, &OrphanGroup::bundleID); }

    test::TemporaryVolume volume;
    ListedReceipts receipts;
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
        {"Application Support/Tidemark", ""}, // of which of the two?
        {"Application Support/Zander", ""},   // perhaps of Zander Studio
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
    volume.write(home + "Preferences/notes.backup.plist", "x"); // twice, but never by macOS itself
    volume.write(home + "Caches/notes.backup/x", "x");
    EXPECT_THAT(eachOf(scan({"protected.tool"}).groups, &OrphanGroup::bundleID),
                ElementsAre("seb.glaciermac"));
}

TEST_F(OrphanScan, LeavesAloneWhatAnybodyCouldClaim) {
    test::writeBundle(volume, "/Applications/Marlin.app", "com.marlin.notes", "Marlin");
    test::writeBundle(volume, "/Applications/Marlin.app/Contents/PlugIns/S.appex", "org.capture.share", "S");
    const std::pair<const char*, std::string> owners[] = {
        // Wherever it is installed, and whatever it is.
        {"/Applications/A/B/C/D/E/Deep.app", "com.deep.tool"},
        {"/Applications/.Hidden.app", "com.hidden.tool"},
        {"/Elsewhere/Linked.app", "com.linked.tool"},
        {"/Users/bob/Applications/Bobs.app", "com.bobs.tool"},
        {"/Users/alice/Desktop/Renamed 2.app", "com.renamed.tool"},
        {"/Users/alice/Games/Chess/Chess.app", "com.chess.tool"},
        {"/Users/alice/Loose.app", "com.loose.tool"},
        {"/Users/alice/Documents/Letter.app", "com.letter.tool"},
        {"/Users/Shared/Maker/Shared.app", "com.shared.tool"},
        {"/opt/maker/Opt.app", "com.optional.tool"},
        {"/Users/alice/Library/Developer/Xcode/DerivedData/P-x/Build/Products/Debug/P.app", "com.built.tool"},
        {"/Users/alice/Library/Application Support/Maker/Updater.app", "com.updater.tool"},
        {"/Library/Application Support/Daily/Daily Update.app", "com.daily.update"},
        {"/Library/Audio/Plug-Ins/VST3/Maker/Synth.vst3", "com.synth.plugin"},
        {"/Library/Printers/Maker/Tools/Queue.app", "com.printer.queue"},
        {"/Library/Image Capture/Devices/Scan.app", "com.scanner.device"},
        {"/Library/Filesystems/Maker/Disk.fs", "com.disk.files"},
        {"/Applications/Suite.bundle/In.app", "com.suite.tool"},
        {"/Applications/Marlin.app/Contents/PlugIns/S.appex/Contents/XPCServices/Two.xpc", "org.two.deep"},
        {"/Applications/Marlin.app/Contents/Frameworks/E.framework/Versions/A/Helpers/H.app",
         "org.engine.tab"},
        {"/Applications/Marlin.app/Contents/Library/LoginItems/Zeppelin.app", "org.login.item"}};
    for (const auto& [bundle, owner] : owners) {
        test::writeBundle(volume, bundle, owner, "Any Name");
        volume.write(home + "Preferences/" + owner + ".plist", "x");
    }
    volume.link("/Applications/Linked.app", "/Elsewhere/Linked.app");
    volume.write(home + "Containers/com.apple.mail/.com.apple.containermanagerd.metadata.plist",
                 writeXmlPropertyList(PropertyListDictionary{{"MCMMetadataIdentifier", "com.gone.liar"}}));
    volume.write(home + "Containers/com.marlin.notes/.com.apple.containermanagerd.metadata.plist",
                 writeXmlPropertyList(PropertyListDictionary{{"MCMMetadataIdentifier", "com.gone.other"}}));
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
        "Preferences/edu.mit.Kerberos.plist",
        "Group Containers/group.is.workflow.my.app/x",
        "Application Support/Marlin/com.third.plugin/x",   // in the folder of an application
        "Application Support/Capture/com.third.plugin/x",  // in that of its maker
        "Application Support/Zeppelin/com.third.plugin/x", // in that of its helper
        "Preferences/com.corvella.tidwen.plist",           // ours
        "Preferences/loginwindow.plist",                   // no identifier
        "Preferences/some.thing.else.plist",               // begins with no domain
        "Preferences/com.two.plist",                       // too short to tell
        "Caches/Gone Application/x",                       // a name alone
        "Preferences/com.protected.app.plist",
        "Preferences/com.registered.app.helper.plist",
        "Application Support/com.apple.sharedfilelist/com.gone.thing/x",
    };
    for (const auto* name : names)
        volume.write(home + name, "x");
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
    InstalledBundles installed(files, signatures, test::alice());
    OrphanScanner scanner({files, receipts, running, log}, test::alice(), [](const auto&) { return false; });
    const auto result = scanner.scan(installed, {});
    EXPECT_THAT(result.groups, IsEmpty());
    EXPECT_GT(result.leftOut, 0u);
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

TEST_F(OrphanScan, TakesNoApplicationAlongWithAFolder) {
    volume.write(home + "Application Support/com.gone.store/data", "x");
    volume.write(home + "Application Support/com.gone.shop/data", "x");
    test::writeBundle(volume, home + "Application Support/com.gone.shop/Game.app", "org.maker.game", "Game");
    EXPECT_THAT(orphans(), ElementsAre("com.gone.store"));
}

TEST_F(OrphanScan, KnowsADeadJobByItsProgram) {
    test::writeBundle(volume, "/Applications/Marlin.app", "com.marlin.notes", "Marlin");
    volume.write("/usr/local/bin/serviced", "x");
    volume.write("/Library/PrivilegedHelperTools/com.left.helper", "x");
    volume.link("/Users/alice/Away", "/Volumes/Drive");
    volume.write("/Volumes/Attached/x", "x");
    const struct {
        const char* label;
        PropertyListDictionary means;
        bool lives;
    } jobs[] = {
        {"com.present.job", {{"Program", "/usr/local/bin/serviced"}}, true},
        {"com.system.job", {{"Program", "/bin/zsh"}}, true},
        {"com.arguments.job", {{"ProgramArguments", PropertyListArray{"/usr/bin/env", "x"}}}, true},
        {"com.drive.job", {{"Program", "/Volumes/Drive/tool"}}, true},
        {"com.attached.job", {{"Program", "/Volumes/Attached/tool"}}, true},
        {"com.linked.job", {{"Program", "/Users/alice/Away/tool"}}, true},
        {"com.relative.job", {{"Program", "tool"}}, true},
        {"com.service.job", {{"MachServices", PropertyListDictionary{{"com.service.job", true}}}}, true},
        {"com.inbundle.job", {{"BundleProgram", "Contents/MacOS/x"}}, true},
        {"com.associated.job",
         {{"Program", "/usr/local/bin/gone"}, {"AssociatedBundleIdentifiers", "com.Marlin.Notes"}},
         true},
        {"com.gone.job", {{"Program", "/usr/local/bin/gone"}}, false},
        {"com.nobodys.job",
         {{"Program", "/Applications/Gone.app/x"},
          {"AssociatedBundleIdentifiers", PropertyListArray{"com.nobodys.app"}}},
         false},
        {"com.left.helper", {{"Program", "/Library/PrivilegedHelperTools/com.left.helper"}}, true},
        {"com.lost.helper", {{"Program", "/Library/PrivilegedHelperTools/com.lost.helper"}}, false},
    };
    // A tool that stays keeps what is its own, and nothing else of its maker.
    volume.write(home + "Caches/com.left.helper.cache/x", "x");
    volume.write(home + "Preferences/com.left.app.plist", "x");
    std::vector<std::string> dead = {"com.left.app"};
    for (const auto& [label, means, lives] : jobs) {
        auto list = means;
        list["Label"] = label;
        volume.write(std::string("/Library/LaunchDaemons/") + label + ".plist",
                     writeXmlPropertyList(std::move(list)));
        volume.write(home + "Preferences/" + label + ".plist", "x");
        if (!lives) dead.emplace_back(label);
    }
    EXPECT_THAT(orphans(), testing::UnorderedElementsAreArray(dead));
}

TEST_F(OrphanScan, LeavesAloneWhatALivingJobStarts) {
    volume.makeFolder("/Users/bob/Library");
    volume.link(home + "HTTPStorages", "Elsewhere");
    test::writeBundle(volume, "/Applications/Own.app", "io.own.app", "Own");
    volume.link("/Users/alice/tools", home + "Caches/com.gone.linked");
    const std::string support = "Library/Application Support/";
    const struct {
        std::string item, agents;
        PropertyListDictionary means;
        bool lives;
    } jobs[] = {
        {"/Users/alice/" + support + "com.gone.agent", home, {{"Program", "@/bin/tool"}}, true},
        {"/" + support + "com.gone.script",
         "/Library/",
         {{"ProgramArguments", PropertyListArray{"/bin/sh", "@/tool"}}},
         true},
        {"/Users/Shared/com.gone.common", "/Users/bob/Library/", {{"Program", "@/tool"}}, true},
        {home + "Caches/com.gone.linked", home, {{"Program", "/Users/alice/tools/tool"}}, true},
        {home + "Caches/com.gone.carried",
         "/Applications/Own.app/Contents/Library/",
         {{"Program", "@/tool"}},
         true},
        {home + "Elsewhere/com.gone.moved", home, {{"Program", "@/tool"}}, true},
        {home + "Caches/com.gone.absent",
         home,
         {{"ProgramArguments", PropertyListArray{"/bin/sh", "@/none"}}},
         false},
        {home + "Caches/com.gone.dead",
         home,
         {{"ProgramArguments", PropertyListArray{"/Applications/Gone.app/x", "@/tool"}}},
         false},
    };
    std::vector<std::string> dead;
    int number = 0;
    for (const auto& [item, agents, means, lives] : jobs) {
        for (const auto* program : {"/tool", "/bin/tool"})
            volume.write(item + program, "x");
        auto list = writeXmlPropertyList(means);
        if (const auto at = list.find('@'); at != list.npos) list.replace(at, 1, item);
        list.insert(list.find("<dict>") + 6, "<key>Label</key><string>net.starter</string>");
        volume.write(agents + "LaunchAgents/" + std::to_string(++number) + ".plist", list);
        if (!lives) dead.push_back(Path(item).lastComponent());
    }
    EXPECT_THAT(orphans(), testing::UnorderedElementsAreArray(dead));
}

TEST_F(OrphanScan, ClaimsNothingWhereAJobThatWorksMayNotHaveBeenCounted) {
    volume.write("/opt/tool", "x");
    volume.write(home + "Caches/com.gone.ferry/data", "x");
    volume.write(home + "Caches/com.living.tool/data", "x");
    for (int i = 0; i < 5'000; ++i)
        volume.write(home + "LaunchAgents/" + std::to_string(i) + ".plist", job("com.dead.job", "/opt/none"));
    volume.write(home + "LaunchAgents/last.plist", job("com.living.tool", "/opt/tool"));
    const auto result = scan();
    EXPECT_THAT(result.groups, testing::IsEmpty());
    EXPECT_THAT(result.gaps,
                ElementsAre(SweepGap{Path(home + "LaunchAgents"), SweepGap::Reason::unreadable}));
}

TEST_F(OrphanScan, KnowsADeadPackageByItsFiles) {
    volume.write("/usr/local/bin/tool", "x");
    volume.write("/Library/Application Support/Engine/engine", "x");
    volume.write("/Library/LaunchDaemons/com.sold.app.plist",
                 job("com.sold.app", "/Applications/Sold.app/x"));
    volume.write("/Library/Spotlight/Index.mdimporter/Contents/x", "x");
    volume.link("/usr/local/bin/away", "/Volumes/Away/tool");
    for (const auto* left : {"PrivilegedHelperTools/com.rooted.app.tool", "Application Support/Half/x",
                             "Application Support/com.data.engine/x"})
        volume.write(std::string("/Library/") + left, "x");
    const struct {
        std::string identifier;
        std::vector<std::string> files;
        bool lives;
    } packages[] = {
        {"com.tool.pkg", {"usr", "usr/local", "usr/local/bin/tool"}, true},
        {"com.engine.pkg", {"Library/Application Support/Engine/engine"}, true},
        {"com.index.app",
         {"Applications/Index.app/Contents/x", "Library/Spotlight/Index.mdimporter/Contents/x"},
         true},
        {"com.both.app", {"Applications/Both.app/Contents/x", "usr/local/bin/tool"}, true},
        {"com.sold.app",
         {"Applications", "Applications/Sold.app/x", "Library/LaunchDaemons/com.sold.app.plist"},
         false},
        {"com.away.pkg", {"usr/local/bin/away"}, true},
        {"com.half.app", {"Applications/Half.app/x", "Library/Application Support/Half/x"}, true},
        {"com.rooted.app",
         {"Applications/Rooted.app/x", "Library/PrivilegedHelperTools/com.rooted.app.tool"},
         true},
        {"com.data.engine",
         {"Applications/Data.app/x", "Library/Application Support/com.data.engine/x"},
         false},
        {"com.gone.pkg", {"usr/local/bin", "usr/local/bin/gone", "../../usr/local/bin"}, false},
        {"com.empty.pkg", {}, false},
    };
    std::vector<std::string> dead;
    for (const auto& [identifier, files, lives] : packages) {
        receipts.packages[identifier] = files;
        volume.write("/private/var/db/receipts/" + identifier + ".plist", "x");
        volume.write(home + "Preferences/" + identifier + ".plist", "x");
        if (!lives) dead.push_back(identifier);
    }
    EXPECT_THAT(orphans(), testing::UnorderedElementsAreArray(dead));
}

TEST_F(OrphanScan, TakesAReceiptAloneOnlyWhenItsApplicationIsGone) {
    receipts.packages = {{"com.lost.app", {"Applications/Lost.app/Contents/x"}},
                         {"com.lost.tool", {"usr/local/bin/gone"}}};
    for (const auto& [identifier, files] : receipts.packages)
        volume.write("/private/var/db/receipts/" + identifier + ".bom", "x");
    EXPECT_THAT(orphans(), ElementsAre("com.lost.app"));
}

TEST_F(OrphanScan, ClaimsNothingThatAnUnseenApplicationMayOwn) {
    using Reason = SweepGap::Reason;
    const std::string damaged = "/Applications/Damaged.app";
    test::writeBundle(volume, "/Users/bob/Applications/Bobs.app", "com.bobs.app", "Bobs");
    volume.makeFolder("/Users/bob/Library/LaunchAgents");
    test::writeBundle(volume, damaged, "com.damaged.app", "Damaged");
    test::giveToUnprivileged(volume.hostRoot());
    const auto forbid = [&](const std::string& path) {
        std::filesystem::permissions(volume.host(path), std::filesystem::perms::none);
    };
    const struct {
        const char* what;
        std::function<void()> change;
        SweepGap gap;
        std::vector<std::string> claimed;
    } cases[] = {
        {"other user's Library",
         [&] { forbid("/Users/bob/Library"); },
         {Path("/Users/bob/Library"), Reason::unreadable, true},
         {"com.gone.own"}},
        {"other user's applications",
         [&] { forbid("/Users/bob/Applications"); },
         {Path("/Users/bob/Applications"), Reason::unreadable, true},
         {"com.gone.own"}},
        {"damaged application",
         [&] { volume.write(damaged + "/Contents/Info.plist", "?"); },
         {Path(damaged), Reason::damaged, false},
         {}},
        {"a maker's folder",
         [&] {
             std::filesystem::remove_all(volume.host(damaged));
             volume.makeFolder("/Applications/Maker");
             forbid("/Applications/Maker");
         },
         {Path("/Applications/Maker"), Reason::unreadable, false},
         {}},
        {"an application on a disk that is away",
         [&] { volume.link("/Applications/Away.app", "/Volumes/Drive/Away.app"); },
         {Path("/Applications/Away.app"), Reason::away, false},
         {}},
        {"a suite on a disk that is away",
         [&] { volume.link("/Applications/Suite", "/Volumes/Drive/Suite"); },
         {Path("/Applications/Suite"), Reason::away, false},
         {}},
        {"a helper of an application",
         [&] {
             test::writeBundle(volume, "/Applications/Fine.app/Contents/PlugIns/W.appex", "io.widget.w", "W");
             test::writeBundle(volume, "/Applications/Fine.app", "com.fine.app", "Fine");
             forbid("/Applications/Fine.app/Contents/PlugIns");
         },
         {Path("/Applications/Fine.app"), Reason::unreadable, false},
         {}},
        {"a job",
         [&] {
             volume.write(home + "LaunchAgents/closed.plist", job("com.closed.job", "/bin/sh"));
             forbid(home + "LaunchAgents/closed.plist");
         },
         {Path(home + "LaunchAgents/closed.plist"), Reason::unreadable, false},
         {}},
        {"a damaged job",
         [&] { volume.write(home + "LaunchAgents/damaged.plist", "?"); },
         {Path(home + "LaunchAgents/damaged.plist"), Reason::unreadable, false},
         {}},
        {"no applications",
         [&] {
             std::filesystem::permissions(volume.host("/Applications/Maker"), std::filesystem::perms::all);
             std::filesystem::rename(volume.host("/Applications"), volume.host("/Away"));
         },
         {Path("/Applications"), Reason::absent, false},
         {}},
    };
    test::asUnprivileged([&] {
        volume.write(home + "Preferences/com.gone.own.plist", "x");
        volume.write("/Library/Preferences/com.gone.shared.plist", "x");
        volume.write("/Users/Shared/com.gone.common/x", "x");
        EXPECT_THAT(orphans(),
                    testing::UnorderedElementsAre("com.gone.own", "com.gone.shared", "com.gone.common"));
        for (const auto& [what, change, gap, claimed] : cases) {
            SCOPED_TRACE(what);
            change();
            const auto result = scan();
            EXPECT_THAT(result.gaps, testing::Contains(gap));
            EXPECT_THAT(eachOf(result.gaps, &SweepGap::place),
                        testing::Not(testing::Contains(Path("/Users/bob/Library/LaunchAgents"))));
            EXPECT_EQ(eachOf(result.groups, &OrphanGroup::bundleID), claimed);
        }
    });
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
