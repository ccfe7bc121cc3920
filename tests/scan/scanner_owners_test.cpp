// Ownership of finds: the target's, or that of an application that stays.

#include "base/path.h"
#include "base/property_list.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "scan/scanner_fixture.h"

#include "support/unprivileged.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <unistd.h>
#include <variant>
#include <vector>

namespace tidwen {
namespace {

TEST_F(Scanner, JudgesJobsByTheirProgramsPlace) {
    installed.push_back(test::owner("/Applications/Other.app", "com.other.app", "Other"));
    target.name = "Alice";
    const struct {
        const char *label, *program, *claimant; // none: not the target's
        const char* file = nullptr;             // none: named after the label
    } cases[] = {
        {"a.job", "/opt/tools/Alice/run", ""},
        {"b.job", "/Users/alice/bin/sync", nullptr}, // also the user's name
        {"c.job", "/usr/bin/alice", nullptr},
        {"d.job", "/usr/bin/com.corvella.marlin.notes", ""},
        {"e.job", "/Applications/Other.app/Contents/Alice/x", "com.other.app"},
        {"com.corvella.marlin.notes.i", "/opt/com.other.app/i", "com.other.app"}, // in that owner's folder
        {"j.job", "/opt/Alice/com.other.app.j", "com.other.app"},
        {"com.other.app.sync", "/opt/Alice/x", "com.other.app"},
        {"com.apple.job", "/opt/Alice/x", nullptr},
        // By the names of their files.
        {"f.job", "/opt/tools/Alice/run", "com.other.app", "com.Other.app"},
        {"g.job", "/opt/tools/Alice/run", nullptr, "com.apple.g"},
        {"com.corvella.marlin.notes.h", "/usr/bin/com.corvella.marlin.notes", "com.other.app",
         "com.other.app.sync-h"},
    };
    std::vector<std::string> expected;
    for (const auto& c : cases) {
        const std::string file = c.file ? c.file : c.label;
        writeJob(library + "LaunchAgents/" + file + ".plist", c.label, c.program);
        if (!c.claimant) continue;
        const bool isExact = (c.label + std::string(c.program)).find("corvella") != std::string::npos;
        expected.push_back(fmt::format("launchItems {}: ~LaunchAgents/{}.plist job{}",
                                       isExact ? "exactBundleID" : "nameToken", file,
                                       *c.claimant ? fmt::format(" contested by {}", c.claimant) : ""));
    }
    EXPECT_THAT(found(), testing::UnorderedElementsAreArray(expected));

    target.name = "Contents"; // a folder in every bundle
    EXPECT_THAT(found(),
                ElementsAre("launchItems exactBundleID: ~LaunchAgents/com.corvella.marlin.notes.i.plist job "
                            "contested by com.other.app",
                            "launchItems exactBundleID: ~LaunchAgents/com.other.app.sync-h.plist job "
                            "contested by com.other.app",
                            "launchItems exactBundleID: ~LaunchAgents/d.job.plist job"));
}

TEST_F(Scanner, UnloadsNoJobOfOthersThatABundleNames) {
    installed.push_back(test::owner("/Applications/Other.app", "com.other.app", "Other"));
    for (const auto* label : {"com.apple.Finder", "com.other.app", "com.other.app.sync", "own"})
        target.embeddedLaunchdItems.push_back(
            {.label = label, .plist = Path(), .isSystemDomain = false, .programPath = std::nullopt});
    EXPECT_THAT(found(),
                ElementsAre("launchItems declaredTarget: com.other.app contested by com.other.app",
                            "launchItems declaredTarget: com.other.app.sync contested by com.other.app",
                            "launchItems declaredTarget: own"));

    // launchd has another job with that label, or the label is another's identifier.
    writeJob(library + "LaunchAgents/a.plist", "own", "/Applications/Other.app/Contents/x");
    EXPECT_THAT(found(), testing::Contains("launchItems declaredTarget: own contested by own"));
}

TEST_F(Scanner, LeavesABundleWhoseFileNameEqualsAnIdentifier) {
    const std::string method = library + "Input Methods/Acme.Input.app";
    test::writeBundle(volume, method, "com.corvella.marlin.notes.input", "Acme");
    installed.push_back(test::owner(method, "com.corvella.marlin.notes.input", "Acme"));
    target.loginItemBundleIDs = {"Acme.Input.App"};
    for (const auto* name : {"Caches/Acme.Input.App", "Caches/com.corvella.marlin.notes.input"})
        volume.makeFolder(library + name);
    EXPECT_THAT(found(),
                ElementsAre("caches exactBundleID: ~Caches/Acme.Input.App",
                            "caches exactBundleID: ~Caches/com.corvella.marlin.notes.input contested "
                            "by com.corvella.marlin.notes.input"));
}

TEST_F(Scanner, AGroupStaysSharedWhenAllWhoDeclareItGo) {
    const std::string other = "/Applications/Other.app";
    test::writeBundle(volume, other, "com.other.app", "Other");
    installed.push_back(test::owner(other, "com.other.app", "Other"));
    signatures.groups[Path(other)] = target.appGroups = {"ABCDE12345.suite"};
    volume.makeFolder(library + "Group Containers/ABCDE12345.suite");
    const std::string group = "containers sharedAppGroup: ~Group Containers/ABCDE12345.suite";
    EXPECT_THAT(found(), ElementsAre(group + " contested by com.other.app"));
    together = {target, {.bundleURL = Path(other), .bundleID = "com.other.app", .name = "Other"}};
    EXPECT_THAT(found(), ElementsAre(group));
}

TEST_F(Scanner, AJobIsAlsoWhoseItSaysItWorksFor) {
    installed.push_back(test::owner("/Applications/Other.app", "com.other.app", "Other"));
    for (const std::string other : {"com.other.app", "com.corvella.marlin.notes"})
        volume.write(library + "LaunchAgents/" + other + "-works.plist",
                     writeXmlPropertyList(PropertyListDictionary{{"Label", "com.corvella.marlin.notes.for"},
                                                                 {"AssociatedBundleIdentifiers", other}}));
    const std::string job = "launchItems exactBundleID: ~LaunchAgents/";
    EXPECT_THAT(found(), ElementsAre(job + "com.corvella.marlin.notes-works.plist job",
                                     job + "com.other.app-works.plist job contested by com.other.app"));
}

TEST_F(Scanner, KnowsItsBundleFromACopyOfIt) {
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes");
    volume.link("/Applications/Link.app", "Marlin Notes.app");
    target.bundleURL = Path("/Applications/Link.app");
    EXPECT_FALSE(scan().traces.at(2).contestedBy);

    // The one in the Trash is removed; the one that stays needs what both share.
    const auto trashed = "/Users/alice/.Trash/Marlin Notes.app";
    test::writeBundle(volume, trashed, "com.corvella.marlin.notes", "Marlin Notes");
    target.bundleURL = Path(trashed);
    const auto traces = scan().traces;
    ASSERT_EQ(traces.size(), 2u); // no application trace
    EXPECT_EQ(traces[0].category, TraceCategory::permissions);
    for (const auto& trace : traces)
        EXPECT_EQ(trace.contestedBy, (Claimant{"com.corvella.marlin.notes", "Marlin Notes", Path(bundle)}));
}

TEST_F(Scanner, LeavesJobsToWhoseBundleHoldsTheirProgram) {
    const std::string other = "/Applications/Other.app";
    test::writeBundle(volume, other, "com.other.app", "Other");
    test::writeBundle(volume, other + "/Contents/Library/LoginItems/Up.app", "com.vend.updater", "Up");
    volume.link("/opt/other", other);
    volume.link("/Applications/Way.app", "Marlin Notes.app");
    target.bundleURL = Path("/Applications/Way.app");
    installed.push_back(test::owner(other, "com.other.app", "Other"));
    target.loginItemBundleIDs = {"com.vend.updater", "com.vend.single"};
    const struct {
        const char *label, *program, *expected;
    } cases[] = {
        {"com.corvella.marlin.notes.a", "/Applications/Other.app/Contents/a",
         "exactBundleID by com.other.app"},
        {"com.corvella.marlin.notes.b", "/opt/other/Contents/b", "exactBundleID by com.other.app"},
        {"com.corvella.marlin.notes.c", "/opt/elsewhere/c", "exactBundleID"},
        {"com.corvella.marlin.notes.d", "/System/Volumes/Data/Applications/Other.app/Contents/a",
         "exactBundleID by com.other.app"},
        {"com.vend.single", "/opt/elsewhere/c", "exactBundleID"},
        {"com.vend.updater", "/opt/elsewhere/c", "exactBundleID by com.other.app"},
        {"own.label", "/Applications/Marlin Notes.app/Contents/MacOS/d", "declaredTarget"},
        {"own.link", "/Applications/Way.app/Contents/MacOS/d", "declaredTarget"},
        {"own.tool", "/usr/local/bin/marlin", "declaredTarget"}, // a link into the bundle
        {"com.other.app.sync", "/Applications/Marlin Notes.app/e", "declaredTarget by com.other.app"},
        {"unrelated", "/Applications/Marlin Notes.app/../Else.app/f", nullptr},
    };
    volume.write(other + "/Contents/b", "x");
    volume.write(bundle + "/Contents/MacOS/tool", "x");
    volume.link("/usr/local/bin/marlin", bundle + "/Contents/MacOS/tool");
    for (const auto& c : cases)
        writeJob(library + "LaunchAgents/" + c.label + ".plist", c.label, c.program);
    std::map<std::string, std::string> found;
    for (const auto& trace : scan().traces)
        if (const auto* job = std::get_if<action::BootoutAndMove>(&trace.action))
            found[job->label] = std::string(name(trace.reason.kind))
                                + (trace.contestedBy ? " by " + trace.contestedBy->bundleID : "");
    for (const auto& c : cases)
        EXPECT_EQ(found.contains(c.label) ? found[c.label] : "none", c.expected ? c.expected : "none")
            << c.label;

    // Both are removed: neither contests the other.
    together = {{.bundleURL = Path(other), .bundleID = "com.other.app", .name = "Other"}};
    for (const auto& trace : scan().traces)
        EXPECT_FALSE(trace.contestedBy) << trace.displayName;
}

TEST_F(Scanner, TakesNothingFromOtherHomes) {
    volume.makeFolder("/Users/bob/Library/Caches/com.corvella.marlin.notes");
    volume.link(library + "Caches", "/Users/bob/Library/Caches");
    volume.makeFolder(library + "Logs/com.corvella.marlin.notes");
    volume.link(library + "WebKit", "Logs"); // one folder under two names
    for (const char* file :
         {"Users/alice/.ssh/key", "Users/alice/.marlin/x", "Users/bob/.marlin notes/x",
          "Users/alice/Library/Mail/letter", "Users/alice/Marlin Notes.log", "Users/alice/.ssh/Marlin Notes",
          "Users/alice/Library/Mail/Marlin Notes/x",
          "Users/alice/Library/Safari/com.corvella.marlin.notes.plist", "Users/alice/Projects/Marlin Notes/x",
          "Users/alice/Library/Logs/Marlin Notes/x"})
        volume.write("/" + std::string(file), "x");
    receipts.all = {{"com.corvella.marlin.notes.pkg", Path(),
                     pathsOf("Users/alice/.ssh/key:Users/alice/.marlin/x:Users/bob/.marlin notes/x:"
                             "Users/alice/Library/Mail/letter:Users/alice/Marlin Notes.log:"
                             "Users/alice/.ssh/Marlin Notes:Users/alice/Library/Mail/Marlin Notes:"
                             "Users/alice/Library/Safari/com.corvella.marlin.notes.plist:"
                             "Users/alice/Projects/Marlin Notes:Users/alice/Library/Logs/Marlin Notes")}};
    EXPECT_THAT(found(),
                testing::UnorderedElementsAre("caches exactBundleID: ~WebKit/com.corvella.marlin.notes",
                                              "caches nameToken: ~WebKit/Marlin Notes"));
    for (int i = 0; i <= 2'000; ++i)
        volume.link("/Users/bob/" + std::to_string(i), "/nowhere");
    for (const auto& trace : scan().traces)
        EXPECT_TRUE(trace.category != TraceCategory::caches || trace.mayHoldOthers) << trace.displayName;
}

TEST_F(Scanner, TakesNoSharedFileOnTheWordOfAPackageAlone) {
    installed.push_back(
        test::owner("/Applications/Brightwell Studio.app", "com.brightwell.studio", "Brightwell Studio"));
    const struct {
        const char *file, *expected;
        const char* bundleID = nullptr;
    } cases[] = {
        {"Users/Shared/family/photo.jpg", "only listed"},
        {"opt/tools/node", "only listed"},
        {"opt/tools/bounce", "only listed, com.brightwell.studio"}, // listed in its package, too
        {"opt/tools/marlin notes", "com.brightwell.studio"},        // the same
        {"Users/Shared/Brightwell Studio/a", "only listed, com.brightwell.studio"},
        {"opt/tools/com.brightwell.studio.b", "only listed, com.brightwell.studio"},
        {"opt/Marlin Notes/c", ""},
        // Bundles, identified by themselves whether the service found them or not.
        {"Library/Frameworks/Run.framework", "only listed, org.run.time", "org.run.time"},
        {"Library/Frameworks/Shared.framework", "only listed, com.brightwell.studio"},
        {"Library/Frameworks/Nobody.framework", "only listed"},
        {"Library/Extensions/Driver.kext", "", "com.corvella.marlin.notes.driver"},
        {"Library/Audio/Marlin Notes.driver", "com.maker.audio", "com.maker.audio"},
        {"Library/Frameworks/Apple.framework", nullptr, "com.apple.thing"},
    };
    installed.push_back(
        test::owner("/Library/Extensions/Driver.kext", "com.corvella.marlin.notes.driver", "Driver"));
    receipts.all = {{"com.brightwell.studio.pkg", Path("/"),
                     pathsOf("opt/tools/bounce:opt/tools/Marlin Notes:Library/Frameworks/Shared.framework")},
                    {"com.corvella.marlin.notes.pkg", Path(), {}},
                    {"org.gone.pkg", Path("/opt"), {"Marlin Notes/c"}}};
    for (const auto& c : cases) {
        if (c.bundleID)
            test::writeBundle(volume, "/" + std::string(c.file), c.bundleID, "Bundle");
        else if (Path(c.file).extension() == "framework")
            volume.makeFolder("/" + std::string(c.file));
        else
            volume.write("/" + std::string(c.file), "x");
        receipts.all[1].files.emplace_back(c.file);
    }
    std::map<std::string, std::string> found;
    for (const auto& trace : scan().traces) {
        if (trace.category != TraceCategory::receipts) continue;
        auto& line = found[trace.displayName.substr(1)];
        line = trace.isOnlyListed ? "only listed" : "";
        if (trace.contestedBy) line += (line.empty() ? "" : ", ") + trace.contestedBy->bundleID;
    }
    EXPECT_EQ(found.size(), std::size(cases) - 1);
    for (const auto& c : cases)
        EXPECT_EQ(found.contains(c.file) ? found[c.file] : "none", c.expected ? c.expected : "none")
            << c.file;
}

TEST_F(Scanner, AsksRootAndOthersForTheJobsOfPackages) {
    user.userID = ::getuid(); // who owns all files of the test
    installed.push_back(test::owner("/Applications/Other.app", "com.other.app", "Other"));
    writeJob("/opt/corvella/LaunchAgents/d.plist", "unrelated.d", "/opt/x");
    writeJob("/opt/corvella/LaunchDaemons/a.plist", "com.other.app.sync", "/opt/x");
    writeJob("/opt/corvella/LaunchDaemons/b.plist", "unrelated", "/Applications/Other.app/x");
    writeJob("/opt/corvella/LaunchDaemons/c.plist", "unrelated.c", "/opt/x");
    receipts.all = {
        {"com.corvella.marlin.notes.pkg", Path("/opt/corvella"),
         pathsOf("LaunchAgents/d.plist:LaunchDaemons/a.plist:LaunchDaemons/b.plist:LaunchDaemons/c.plist")}};
    const std::string folder = "launchItems receipt: /opt/corvella/";
    EXPECT_THAT(found(), ElementsAre(folder + "LaunchAgents/d.plist job",
                                     folder + "LaunchDaemons/a.plist root job contested by com.other.app",
                                     folder + "LaunchDaemons/b.plist root job contested by com.other.app",
                                     folder + "LaunchDaemons/c.plist root job"));
}

TEST_F(Scanner, LeavesFoldersInWhichBundlesOfOthersLie) {
    const std::string identifier = "com.corvella.marlin.notes";
    test::writeBundle(volume, bundle + "/Contents/Helpers/H.app", "net.embedded.helper", "H");
    const std::string damaged = library + "Logs/Marlin Notes/Shut.app";
    coverage.damaged = {Path(damaged)};
    const struct {
        std::string place, bundleID;
        const char* name = nullptr; // the name by which it was found, too
    } bundles[] = {
        {library + "Application Support/Marlin Notes/Games/Other.app", "com.other.game"},
        {library + "Caches/" + identifier + "/Six.app", "com.other.six", "/Applications/Six.app"},
        {"/opt/far/Seven.app", "com.other.seven",
         "/Users/alice/Library/HTTPStorages/com.corvella.marlin.notes/Seven.app"},
        {damaged, ""},
        {"/Users/Shared/Marlin Notes/Two.app", "com.other.two"},
        {library + "WebKit/" + identifier + "/Own.app", identifier + ".own"},
        {library + "Application Scripts/" + identifier + "/Pro.app", identifier + ".pro",
         "/Applications/Pro.app"},
        {library + "WebKit/" + identifier + "/Helper.app", "net.embedded.helper"},
        {"/Users/Shared/MarlinEngine/Helper.app", "net.embedded.helper"},
        {library + "WebKit/" + identifier + "/Updater.app", "org.sparkle-project.Sparkle.Updater"},
        {library + "WebKit/" + identifier + "/data.plugin", ""},
    };
    const auto unknown = library + "Application Support/MarlinEngine/a/b/Deep.app"; // unknown to the service
    test::writeBundle(volume, unknown, "com.other.deep", "Deep");
    const auto suite =
        library + "Cookies/" + identifier + "/Suite.bundle/In.app/In.app"; // without bundles around it
    test::writeBundle(volume, suite, "com.other.in", "In");
    test::writeBundle(volume, library + "WebKit/" + identifier + "/u/Marlin.app", identifier, "Marlin");
    volume.makeFolder(library + "WebKit/" + identifier + "/u/data.app");
    for (const auto& each : bundles) {
        volume.makeFolder(each.place);
        installed.push_back(test::owner(each.place, each.bundleID, Path(each.place).stem()));
        if (each.name) installed.back().foundAs = {Path(each.name)};
    }
    volume.makeFolder(library + "HTTPStorages/" + identifier);
    EXPECT_THAT(
        found(),
        ElementsAre(
            "supportFiles nameToken: ~Application Support/Marlin Notes contested by com.other.game",
            "supportFiles executableName: ~Application Support/MarlinEngine contested by com.other.deep",
            "caches exactBundleID: ~Caches/" + identifier + " contested by com.other.six",
            "caches exactBundleID: ~HTTPStorages/" + identifier + " contested by com.other.seven",
            "caches exactBundleID: ~WebKit/" + identifier, "logs nameToken: ~Logs/Marlin Notes contested by ",
            "caches exactBundleID: ~Cookies/" + identifier + " contested by com.other.in",
            "supportFiles exactBundleID: ~Application Scripts/" + identifier + " contested by " + identifier
                + ".pro",
            "supportFiles nameToken: /Users/Shared/Marlin Notes contested by com.other.two",
            "supportFiles executableName: /Users/Shared/MarlinEngine"));
    together.push_back({.bundleURL = Path(unknown), .bundleID = "com.other.deep"});
    together.push_back({.bundleURL = Path(suite), .bundleID = "com.other.in"});
    for (const auto& each : bundles) // all of them are removed
        together.push_back({.bundleURL = Path(each.place), .bundleID = each.bundleID});
    for (const auto& trace : scan().traces)
        EXPECT_FALSE(trace.contestedBy) << trace.displayName;
}

/// Whatever its file is called.
TEST_F(Scanner, LeavesABundleToTheOwnerThatItsIdentifierNames) {
    const std::string identifier = "com.corvella.marlin.notes";
    const auto method = library + "Input Methods/" + identifier + ".im.app";
    test::writeBundle(volume, method, "com.other.im", "Other");
    installed.push_back(test::owner(method, "com.other.im", "Other"));
    test::writeBundle(volume, library + "Services/" + identifier + ".copy.service", "com.other.copy", "Copy");
    test::writeBundle(volume, library + "PreferencePanes/" + identifier + ".prefPane", identifier + ".pane",
                      "P");
    test::writeBundle(volume, library + "Caches/" + identifier + "/Unnamed.app", "", "Unnamed");
    const auto namesake = library + "Internet Plug-Ins/Marlin Notes.plugin"; // a folder, of whomever
    volume.makeFolder(namesake);
    installed.push_back(test::owner(namesake, "", "Marlin Notes"));
    volume.makeFolder(library + "Application Support/Marlin Notes");
    const auto program = library + "Logs/" + identifier + "/bin/program"; // to which another links
    volume.write(program, "x");
    test::writeBundle(volume, "/Applications/Linking.app", "com.other.linking", "Linking");
    volume.link("/Applications/Linking.app/Contents/MacOS/helper", program);
    installed.push_back(test::owner("/Applications/Linking.app", "com.other.linking", "Linking"));
    EXPECT_THAT(found(), testing::UnorderedElementsAre(
                             "logs exactBundleID: ~Logs/" + identifier + " contested by com.other.linking",
                             "supportFiles exactBundleID: ~Input Methods/" + identifier
                                 + ".im.app contested by com.other.im",
                             "supportFiles exactBundleID: ~Services/" + identifier
                                 + ".copy.service contested by com.other.copy",
                             "supportFiles exactBundleID: ~PreferencePanes/" + identifier + ".prefPane",
                             "caches exactBundleID: ~Caches/" + identifier + " contested by ",
                             "supportFiles nameToken: ~Application Support/Marlin Notes"));
}

TEST_F(Scanner, DoubtsAFolderThatItCannotSearchToItsEnd) {
    const std::string support = library + "Application Support/";
    volume.makeFolder(support + "Marlin Notes/closed");
    for (int i = 0; i < 10'000; ++i)
        volume.makeFolder(support + "MarlinEngine/" + std::to_string(i));
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes/1/2/3/4/5/6/7"); // as deep as documented
    test::giveToUnprivileged(volume.hostRoot());
    std::filesystem::permissions(volume.host(support + "Marlin Notes/closed"), std::filesystem::perms::none);
    test::asUnprivileged([&] {
        EXPECT_THAT(eachOf(scan().traces, &Trace::mayHoldOthers),
                    ElementsAre(false, false, true, true, false));
    });
}

TEST_F(Scanner, LeavesFoldersOutOfWhichJobsOfOthersRun) {
    installed.push_back(test::owner("/Applications/Other.app", "com.other.app", "Other"));
    const struct {
        const char *folder, *label, *claimant;
        bool isScript = false, isGone = false, isText = false;
    } cases[] = {
        {"Caches", "com.other.app.agent", " contested by com.other.app"},
        {"HTTPStorages", "org.script", " contested by org.script", true},
        {"WebKit", "org.mine", ""}, // the program's location attributes the job to the target
        {"Logs", "com.other.app.gone", "", false, true},
        {"Cookies", "org.text", " contested by org.text", false, false, true},
    };
    std::vector<std::string> expected;
    for (const auto& c : cases) {
        const auto folder = library + c.folder + "/com.corvella.marlin.notes";
        volume.makeFolder(folder);
        if (!c.isGone) volume.write(folder + "/run", "x");
        PropertyListDictionary job = {{"Label", c.label}, {"Program", folder + "/run"}};
        if (c.isScript)
            job = {{"Label", c.label}, {"ProgramArguments", PropertyListArray{"/bin/sh", folder + "/run"}}};
        if (c.isText)
            job["ProgramArguments"] = PropertyListArray{"/bin/sh", "-c", "cd " + folder + " && ./run"},
            job.erase("Program");
        volume.write(library + "LaunchAgents/" + c.label + ".plist", writeXmlPropertyList(job));
        expected.push_back(std::string(c.folder) + "/com.corvella.marlin.notes" + c.claimant);
    }
    std::vector<std::string> lines;
    for (const auto& line : found())
        if (!line.starts_with("launchItems")) lines.push_back(line.substr(line.find('~') + 1));
    EXPECT_THAT(lines, testing::ElementsAreArray(expected));
}

TEST_F(Scanner, PermissionsAreWhoseTheIdentifierIs) {
    const std::string other = "/Applications/Other.app";
    test::writeBundle(volume, other, "com.other.app", "Other");
    test::writeBundle(volume, other + "/Contents/Library/LoginItems/M.app", "com.corvella.marlin.notes", "M");
    installed.push_back(test::owner(other, "com.other.app", "Other"));
    const auto traces = scan().traces;
    ASSERT_EQ(traces.at(1).category, TraceCategory::permissions);
    ASSERT_TRUE(traces[1].contestedBy);
    EXPECT_EQ(traces[1].contestedBy->bundleID, "com.other.app");
}

TEST_F(Scanner, DoubtsWhatAnUnseenApplicationMayOwn) {
    volume.write("/usr/local/bin/agent", "x");
    const auto doubted = [this] {
        std::vector<std::string> names;
        for (const auto& trace : scan().traces)
            if (trace.ownerUnsure && trace.category != TraceCategory::permissions)
                names.push_back(Path(trace.displayName).lastComponent());
        return names;
    };
    for (const char* name : {"com.corvella.marlin.notes.plist", "com.corvella.marlin.notes.beta.plist"})
        volume.write(library + "Preferences/" + name, "x");
    volume.makeFolder(library + "Caches/Marlin Notes");
    EXPECT_THAT(doubted(), ElementsAre());
    coverage.seesApplications = false;
    EXPECT_THAT(doubted(), UnorderedElementsAre("com.corvella.marlin.notes.beta.plist", "Marlin Notes"));

    target = {};
    target.bundleURL = Path("/");
    target.bundleID = target.name = "com.gone.tool";
    volume.makeFolder(library + "Caches/com.gone.tool");
    EXPECT_THAT(doubted(), ElementsAre("com.gone.tool")) << "it may lie in the rest of /Applications";
    coverage.seesApplications = true;
    EXPECT_THAT(doubted(), ElementsAre());
    const auto job = library + "LaunchAgents/com.gone.tool.agent.plist";
    writeJob(job, "com.gone.tool.agent", "/usr/local/bin/gone");
    EXPECT_THAT(doubted(), ElementsAre());
    writeJob(job, "com.gone.tool.agent", "/usr/local/bin/agent");
    EXPECT_THAT(doubted(), UnorderedElementsAre("com.gone.tool", "com.gone.tool.agent.plist"));

    target.bundleID = target.name = "com.corvella.marlin.notes.beta"; // as a helper is called
    for (const auto& trace : scan().traces)
        EXPECT_TRUE(trace.contestedBy) << trace.displayName;
    target.bundleID = target.name = "com.crashlytics"; // of many applications
    volume.makeFolder(library + "Caches/com.crashlytics");
    EXPECT_THAT(found(), ElementsAre());
}

TEST_F(Scanner, LeftoversOfItsOwnClaimNothing) {
    const std::string plugin = "/Library/PreferencePanes/com.corvella.marlin.notes.prefPane";
    test::writeBundle(volume, plugin, "com.corvella.marlin.notes.pane", "Pane");
    const std::string nested = library + "Application Support/Corvella/Marlin Notes/Helper.app";
    test::writeBundle(volume, nested, "com.corvella.marlin.notes.helper", "Marlin Notes");
    const std::string foreign = library + "Application Support/Else/Pro.app";
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes.pro");
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes.helper");
    installed.push_back(test::owner(plugin, "com.corvella.marlin.notes.pane", "Pane"));
    installed.push_back(test::owner(nested, "com.corvella.marlin.notes.helper", "Marlin Notes"));
    installed.push_back(test::owner(foreign, "com.corvella.marlin.notes.pro", "Pro"));
    EXPECT_THAT(found(),
                ElementsAre("supportFiles nameToken: ~Application Support/Corvella/Marlin Notes",
                            "caches exactBundleID: ~Caches/com.corvella.marlin.notes.helper",
                            "caches exactBundleID: ~Caches/com.corvella.marlin.notes.pro contested by "
                            "com.corvella.marlin.notes.pro",
                            "supportFiles exactBundleID: " + plugin + " root"));
}

} // namespace
} // namespace tidwen
