// Owners in use, whose items the sweep leaves alone.

#include "base/path.h"
#include "base/property_list.h"
#include "sweep/orphan_scan_fixture.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

TEST_F(OrphanScan, LeavesAloneWhatAnybodyCouldClaim) {
    test::writeBundle(volume, "/Applications/Marlin.app", "com.marlin.notes", "Marlin");
    test::writeBundle(volume, "/Applications/Marlin.app/Contents/PlugIns/S.appex", "org.capture.share", "S");
    const std::pair<const char*, std::string> owners[] = {
        // Any kind of bundle, wherever it is installed.
        {"/Applications/A/B/C/D/E/Deep.app", "com.deep.tool"},
        {"/Applications/.Hidden.app", "com.hidden.tool"},
        {"/Elsewhere/Linked.app", "com.linked.tool"},
        {"/Users/bob/Applications/Bobs.app", "com.bobs.tool"},
        {"/Users/alice/Desktop/Renamed 2.app", "com.renamed.tool"},
        {"/Users/alice/Games/Chess/Chess.app", "com.chess.tool"},
        {"/Users/alice/Loose.app", "com.loose.tool"},
        {"/Users/alice/Projects/draft/build/out/Built.app", "com.project.tool"},
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
        {"/Applications/Marlin.app/Contents/Resources/tools/mac/R.app", "org.resource.tool"},
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
        "Preferences/com.marlin.old.plist",            // its vendor's
        "Preferences/org.capture.share.plist",         // embedded
        "Preferences/group.org.capture.share.x.plist", // continues it
        "Preferences/net.someone.marlin.plist",        // contains its name
        "Preferences/com.apple.finder.plist",          // Apple's
        "Preferences/org.cups.PrintingPrefs.plist",    // Apple's with another identifier
        "Preferences/edu.mit.Kerberos.plist",
        "Group Containers/group.is.workflow.my.app/x",
        "Application Support/Marlin/com.third.plugin/x",   // in the folder of an application
        "Application Support/Capture/com.third.plugin/x",  // in that of its vendor
        "Application Support/Zeppelin/com.third.plugin/x", // in that of its helper
        "Preferences/com.corvella.tidwen.plist",           // ours
        "Preferences/loginwindow.plist",                   // no identifier
        "Preferences/some.thing.else.plist",               // begins with no registered domain
        "Preferences/com.two.plist",                       // too short to be evidence
        "Caches/Gone Application/x",                       // only a name
        "Preferences/com.protected.app.plist",
        "Preferences/com.registered.app.helper.plist",
        "Application Support/com.apple.sharedfilelist/com.gone.thing/x",
    };
    for (const auto* name : names)
        volume.write(home + name, "x");
    for (const auto* half : {".plist", ".bom"}) // a receipt alone may be a tool's
        volume.write(std::string("/private/var/db/receipts/com.tool.only") + half, "x");
    registered.identifiers = {"com.registered.app"};
    EXPECT_THAT(scan({"com.Protected.App"}).groups, IsEmpty());
}

TEST_F(OrphanScan, TakesNoApplicationAlongWithAFolder) {
    volume.write(home + "Application Support/com.gone.store/data", "x");
    volume.write(home + "Application Support/com.gone.shop/data", "x");
    test::writeBundle(volume, home + "Application Support/com.gone.shop/Game.app", "org.maker.game", "Game");
    EXPECT_THAT(orphans(), ElementsAre("com.gone.store"));
}

TEST_F(OrphanScan, DoubtsAFolderWithAnotherApplicationAndTakesNothingOfThat) {
    test::writeBundle(volume, home + "Containers/com.gone.app/Data/Keep.app", "org.keep.tool", "Keep");
    test::writeBundle(volume, home + "Containers/com.gone.app/Data/Wren.app", "net.wren.tool", "Wren");
    test::writeBundle(volume, home + "Caches/com.gone.app/Updater.app", "com.gone.app.updater", "Updater");
    test::writeBundle(volume, home + "Caches/com.gone.app.updates/Gone.app", "com.gone.app", "Gone");
    test::writeBundle(volume, home + "WebKit/com.gone.app/Odd.app", "", "Odd");
    volume.write(home + "Preferences/org.keep.tool.plist", "x");
    volume.write(home + "Preferences/net.wren.tool.plist", "x");
    const auto result = scan();
    ASSERT_THAT(eachOf(result.groups, &OrphanGroup::bundleID), ElementsAre("com.gone.app"));
    for (const auto& trace : result.groups.front().traces)
        EXPECT_EQ(trace.contestedBy.has_value(), trace.displayName.find("Caches") == std::string::npos)
            << trace.displayName;
}

TEST_F(OrphanScan, LeavesAloneWhatIsCalledLikeAnInstalledApplication) {
    test::writeBundle(volume, "/Applications/com.form.name.app", "org.zeta.form", "Form");
    test::writeBundle(volume, "/Applications/Shown.app", "org.eta.shown", "com.shown.name");
    for (const char* name : {"com.form.name", "com.shown.name", "com.form.name.helper"})
        volume.write(home + "Caches/" + name + "/x", "x");
    EXPECT_EQ(orphans(), std::vector<std::string>{});
}

TEST_F(OrphanScan, KnowsADeadJobByItsProgram) {
    test::writeBundle(volume, "/Applications/Marlin.app", "com.marlin.notes", "Marlin");
    volume.write("/usr/local/bin/serviced", "x");
    volume.write("/Library/PrivilegedHelperTools/com.left.helper", "x");
    volume.link("/Users/alice/Away", "/Volumes/Drive");
    volume.link("/Users/alice/M", "/Applications/Marlin.app");
    volume.makeFolder(home + "Application Support/com.marlin.notes");
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
        {"com.updated.job", {{"Program", "/Applications/Marlin.app/Contents/MacOS/gone"}}, true},
        {"com.bylink.job", {{"Program", "/Users/alice/M/Contents/MacOS/gone"}}, true},
        {"com.indata.job", {{"Program", home + "Application Support/com.marlin.notes/gone"}}, true},
        {"com.nobodys.job",
         {{"Program", "/Applications/Gone.app/x"},
          {"AssociatedBundleIdentifiers", PropertyListArray{"com.nobodys.app"}}},
         false},
        {"com.left.helper", {{"Program", "/Library/PrivilegedHelperTools/com.left.helper"}}, true},
        {"com.lost.helper", {{"Program", "/Library/PrivilegedHelperTools/com.lost.helper"}}, false},
    };
    // A tool that stays keeps its own items, but nothing else of its vendor.
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
        {home + "Caches/com.gone.text",
         home,
         {{"ProgramArguments", PropertyListArray{"/bin/sh", "-c", "cd '@/bin' && exec ./tool --x"}}},
         true},
        {home + "Application Support/com.gone.escaped",
         home,
         {{"ProgramArguments",
           PropertyListArray{"/bin/sh", "-c",
                             "/Users/alice/Library/Application\\ Support/com.gone.escaped/tool --x"}}},
         true},
        {home + "Caches/com.gone.folder", home, {{"Program", "./tool"}, {"WorkingDirectory", "@"}}, true},
        {home + "Caches/com.gone.variable",
         home,
         {{"ProgramArguments", PropertyListArray{"/usr/bin/env", "PATH=/usr/bin:@/bin", "tool"}}},
         true},
        {home + "Caches/com.gone.environment",
         home,
         {{"Program", "/bin/sh"}, {"EnvironmentVariables", PropertyListDictionary{{"PATH", "@/bin:/bin"}}}},
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
        {"com.drive.pkg", {"Volumes/Drive/tool"}, true},
        {"com.bob.pkg", {"Users/bob/tool"}, true},
        {"com.system.pkg", {"usr/lib/gone"}, true}, // in a part of macOS that this disk lacks
        {"com.carried.app", {"Volumes/Drive/Carried.app/Contents/x"}, true},
        {"com.gone.tool", {"usr/local/bin", "usr/local/bin/gone", "../../usr/local/bin"}, false},
        {"com.empty.tool", {}, false},
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
    volume.write("/usr/local/bin/tool", "x"); // so that missing items are known to be gone
    receipts.packages = {{"com.lost.app", {"Applications/Lost.app/Contents/x"}},
                         {"com.lost.tool", {"usr/local/bin/gone"}}};
    for (const auto& [identifier, files] : receipts.packages)
        for (const auto* half : {".plist", ".bom"})
            volume.write("/private/var/db/receipts/" + identifier + half, "x");
    EXPECT_THAT(orphans(), ElementsAre("com.lost.app"));
}

TEST_F(OrphanScan, OffersHalfAReceiptAndDoubtsWhatItsMakerLeft) {
    const std::string folder = "/private/var/db/receipts/";
    receipts.packages = {{"com.half.pkg", {}}};
    receipts.unreadable = Path(folder + "com.half.pkg.bom"); // not there
    for (const auto& item :
         {folder + "com.half.pkg.plist", folder + "com.other.pkg.bom",
          home + "Preferences/com.half.app.plist", home + "Preferences/com.fine.app.plist"})
        volume.write(item, "x");
    const auto result = scan();
    EXPECT_TRUE(result.isComplete());
    std::map<std::string, bool> isContested;
    for (const auto& group : result.groups)
        for (const auto& trace : group.traces)
            isContested[Path(trace.displayName).lastComponent()] = trace.contestedBy.has_value();
    EXPECT_THAT(isContested, testing::UnorderedElementsAre(
                                 Pair("com.half.pkg.plist", false), Pair("com.other.pkg.bom", false),
                                 Pair("com.half.app.plist", true), Pair("com.fine.app.plist", false)));
}

} // namespace
} // namespace tidwen
