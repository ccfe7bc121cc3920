#include "base/path.h"
#include "base/property_list.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "scan/matching/trace.h"
#include "scan/policy/search_location.h"
#include "scan/policy/trace_category.h"
#include "scan/scanner_fixture.h"

#include "base/text.h"

#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace tidwen {
namespace {

TEST_F(Scanner, LooksEverywhereInOrder) {
    target.appGroups = {"ABCDE12345.suite"};
    target.embeddedLaunchdItems = {{.label = "com.corvella.sync.daemon",
                                    .plist = Path(),
                                    .isSystemDomain = true,
                                    .programPath = std::nullopt}};
    volume.write(library + "Application Support/Marlin Notes/a.db", std::string(50'000, 'x'));
    volume.makeFolder(library + "Group Containers/suite");
    volume.write(library + "Preferences/com.corvella.marlin.notes.plist", "x");
    volume.write(library + "Logs/DiagnosticReports/com.corvella.marlin.notes_2024-05-01_mac.crash", "x");
    volume.write(library + "Logs/DiagnosticReports/Marlin Notes_2024-05-01_mac.crash", "x");
    volume.write(library + "Logs/DiagnosticReports/_com.corvella.marlin.notes", "x");
    volume.write(library + "Logs/DiagnosticReports/MarlinEngine_2024", "x");
    volume.makeFolder(library + "Logs/DiagnosticReports/Marlin Notes_folder");
    volume.makeFolder("/private/var/folders/ab/xyz123/T/com.corvella.marlin.notes");
    writeJob("/Library/LaunchDaemons/com.corvella.sync.daemon.plist", "com.corvella.sync.daemon", "/bin/x");
    writeJob("/Library/LaunchAgents/other.plist", "unrelated.label",
             "/Library/x/com.corvella.marlin.notes/tool");
    writeJob("/Library/LaunchAgents/third.plist", "unrelated.third", "/Library/third/tool");
    volume.write("/Library/LaunchAgents/broken.plist", "com.corvella.marlin.notes");
    volume.write("/Users/Shared/MarlinEngine", "x");
    keychain.all = {{"Marlin Notes", 3, false}, {"com.corvella.marlin.notes", 1, true}, {"Other", 2, false}};
    extensions.all = {{"T", "com.corvella.marlin.notes.filter", "Filter"},
                      {"T", "com.other.filter", "Filter"}};

    EXPECT_THAT(
        found(),
        ElementsAre(
            "supportFiles nameToken: ~Application Support/Marlin Notes",
            "containers appGroup: ~Group Containers/suite",
            "preferences exactBundleID: ~Preferences/com.corvella.marlin.notes.plist",
            "logs nameToken: ~Logs/DiagnosticReports/Marlin Notes_2024-05-01_mac.crash",
            "logs executableName: ~Logs/DiagnosticReports/MarlinEngine_2024",
            "logs exactBundleID: ~Logs/DiagnosticReports/com.corvella.marlin.notes_2024-05-01_mac.crash",
            "caches exactBundleID: /private/var/folders/ab/xyz123/T/com.corvella.marlin.notes",
            "launchItems exactBundleID: /Library/LaunchDaemons/com.corvella.sync.daemon.plist root job",
            "launchItems exactBundleID: /Library/LaunchAgents/other.plist root job",
            "supportFiles executableName: /Users/Shared/MarlinEngine",
            "launchItems declaredTarget: com.corvella.sync.daemon root",
            "keychain nameToken: Marlin Notes keychain.itemCount 3",
            "keychain exactBundleID: com.corvella.marlin.notes keychain.systemSuffix root",
            "systemExtensions exactBundleID: Filter"));

    std::vector<StepProgress> steps;
    const auto result = scan({}, [&](const StepProgress& step) { steps.push_back(step); });
    EXPECT_EQ(steps.size(), steps.back().total);
    EXPECT_EQ(steps.back().step, steps.back().total);
    EXPECT_EQ(steps.front().item, "/Users/alice/Library/Application Support");
    EXPECT_EQ(steps.front().kind, "supportFiles");
    EXPECT_THAT(eachOf(std::vector(steps.end() - 4, steps.end()), &StepProgress::kind),
                ElementsAre("receipts", "keychain", "systemExtensions", "permissions"));
    ASSERT_GE(result.traces.size(), 3u);
    EXPECT_EQ(result.traces[0].action, TraceAction(action::MovePath{Path(bundle)}));
    EXPECT_EQ(result.traces[1].action, TraceAction(action::ResetPermissions{"com.corvella.marlin.notes"}));
    EXPECT_EQ(result.traces[1].risk, TraceRisk::review);
    EXPECT_GE(result.traces[2].sizeBytes.value_or(0), 50'000);
    EXPECT_THAT(result.unreadableLocations, ElementsAre(Path("/Library/LaunchAgents/broken.plist")));
}

TEST_F(Scanner, KnowsContainersByTheirMetadata) {
    const auto container = [&](const std::string& folder, const char* identifier) {
        volume.write(library + folder + "/.com.apple.containermanagerd.metadata.plist",
                     writeBinaryPropertyList(PropertyListDictionary{{"MCMMetadataIdentifier", identifier}}));
    };
    container("Containers/1B2C", "com.corvella.marlin.notes.widget");
    container("Containers/com.corvella.marlin.notes",
              "com.other.app"); // attributed by its record, whatever its name
    container("Daemon Containers/3D4E", "com.corvella.marlin.notes");
    volume.write(
        library + "Containers/com.corvella.marlin.notes.share/.com.apple.containermanagerd.metadata.plist",
        "?");
    const PropertyListDictionary parameters = {{"application_container_id", "com.corvella.marlin.notes.old"}};
    const PropertyListDictionary validation = {{"SandboxProfileDataValidationParametersKey", parameters}};
    volume.write(
        library + "Containers/5F/Container.plist",
        writeXmlPropertyList(PropertyListDictionary{{"SandboxProfileDataValidationInfo", validation}}));
    container("Containers/com.apple.mail",
              "com.corvella.marlin.notes"); // belongs to macOS, whatever its record
    container("Containers/com.third.app", "com.corvella.marlin.notes");
    installed.push_back(test::owner("/Applications/Third.app", "com.third.app", "Third"));
    EXPECT_THAT(found(), ElementsAre("containers exactBundleID: ~Containers/1B2C",
                                     "containers exactBundleID: ~Containers/5F",
                                     "containers exactBundleID: ~Containers/com.third.app contested by "
                                     "com.third.app",
                                     "containers exactBundleID: ~Daemon Containers/3D4E"));
    EXPECT_THAT(scan().unreadableLocations,
                ElementsAre(Path(library + "Containers/com.corvella.marlin.notes.share")));
}

TEST_F(Scanner, LooksIntoVendorsFoldersAndSharedStores) {
    installed.push_back(
        test::owner("/Applications/Corvella Studio.app", "com.corvella.studio", "Corvella Studio"));
    const std::string support = library + "Application Support/";
    for (const auto* folder : {"Corvella/Marlin Notes", "Corvella/Other", "Corvella/deep/Marlin Notes",
                               "Corvella Studio/Marlin Notes", "Corvella Studio/com.corvella.marlin.notes",
                               "Corvella.bundle/Marlin Notes", "Caches/com.corvella.marlin.notes-updater",
                               "FileProvider/com.corvella.marlin.notes", "CloudDocs/Marlin Notes",
                               "com.apple.corvella/Marlin Notes", "Else/Marlin Notes"})
        volume.makeFolder(support + folder);
    volume.link(support + "corvella-link", "Corvella");
    volume.makeFolder(library + "Caches/Corvella/Marlin Notes"); // not a location with vendors' folders
    EXPECT_THAT(
        found(),
        ElementsAre(
            "supportFiles nameToken: ~Application Support/Corvella/Marlin Notes",
            "supportFiles nameToken: ~Application Support/Corvella Studio/Marlin Notes contested by "
            "com.corvella.studio",
            "supportFiles exactBundleID: ~Application Support/Corvella Studio/com.corvella.marlin.notes",
            "supportFiles exactBundleID: ~Application Support/FileProvider/com.corvella.marlin.notes"));
}

TEST_F(Scanner, FoldsWhatReceiptsList) {
    installed.push_back(test::owner("/Applications/Other.app", "com.other.app", "Other"));
    const std::string support = "/Library/Application Support/Corvella";
    for (const auto& file :
         {std::string("/usr/local/bin/marlin"), std::string("/Applications/Other.app/x"),
          std::string("/Library/Widgets/Corvella.plugin/Contents/Info.plist"), support + "/shared.dat",
          support + "/Marlin Notes/a", support + "/com.other.app/b", std::string("/usr/bin/marlin"),
          library + "Preferences/com.apple.mail.plist", std::string("/opt/com.apple.store/x"),
          std::string("/Users/alice/Documents/letter"), std::string("/opt/corvella/Marlin Notes/c")})
        volume.write(file, "x");
    writeJob("/opt/corvella/LaunchAgents/job.plist", "com.unrelated.job", "/x");
    volume.link("/opt/way", "/Users/alice/Documents");
    // Another application is installed through links, and so is a folder of them.
    volume.link("/Applications/Second Name.app", "Other.app");
    installed.back().foundAs = {installed.back().url, Path("/Applications/Second Name.app")};
    test::writeBundle(volume, "/elsewhere/Suite/In.app", "com.suite.in", "In");
    volume.link("/opt/suite", "/elsewhere/Suite");
    installed.push_back(test::owner("/opt/suite/In.app", "com.suite.in", "In"));
    installed.back().place = Path("/elsewhere/Suite/In.app");
    receipts.all = {
        {"com.corvella.marlin.notes.pkg", Path(),
         pathsOf("Applications:Applications/Marlin Notes.app:Applications/Other.app:Applications/Other.app/x:"
                 "Applications/Second Name.app:opt/suite:"
                 "Applications/Marlin Notes.app/Contents/Info.plist:usr/local/bin:usr/local/bin/marlin:"
                 "usr/local/bin/gone:usr/bin/marlin:Library/Widgets:Library/Widgets/Corvella.plugin:"
                 "Library/Widgets/Corvella.plugin/Contents:"
                 "Library/Widgets/Corvella.plugin/Contents/Info.plist:Library/Application Support/Corvella:"
                 "Library/Application Support/Corvella/shared.dat:"
                 "Library/Application Support/Corvella/Marlin Notes/a:"
                 "Library/Application Support/Corvella/com.other.app/b:Users/alice/Documents/letter:"
                 "Users/alice/Library/Preferences/com.apple.mail.plist:opt/com.apple.store/x:"
                 "opt/way/letter::.")},
        {"com.corvella.marlin.notes.tools",
         Path("/opt/corvella"),
         {"../../usr/local/bin/marlin", "Marlin Notes/c", "Marlin Notes", "LaunchAgents/job.plist"}},
        {"Marlin Notes", Path("/opt"), {"corvella/Marlin Notes/c"}},
    };
    EXPECT_THAT(found(), ElementsAre("supportFiles nameToken: " + support + "/Marlin Notes root",
                                     "receipts receipt: " + support
                                         + "/com.other.app/b root contested by com.other.app",
                                     "receipts receipt: " + support + "/shared.dat root",
                                     "receipts receipt: /Library/Widgets/Corvella.plugin root",
                                     "receipts receipt: /usr/local/bin/marlin root",
                                     "launchItems receipt: /opt/corvella/LaunchAgents/job.plist root job",
                                     "receipts receipt: /opt/corvella/Marlin Notes root"));
}

TEST_F(Scanner, CountsWhatIsInsideTheBundleAsItsOwn) {
    test::writeBundle(volume, bundle + "/Contents/XPCServices/x.xpc", "com.corvella.engine", "x");
    test::writeBundle(volume, bundle + "/Contents/PlugIns/y.appex", "com.other.app", "y");
    target.loginItemBundleIDs = {"com.corvella.login.item"};
    installed.push_back(test::owner("/Applications/Other.app", "com.other.app", "Other"));
    for (const auto* name : {"com.corvella.engine", "com.other.app", "com.corvella.login.item.x"})
        volume.makeFolder(library + "Caches/" + name);
    EXPECT_THAT(found(), ElementsAre("caches exactBundleID: ~Caches/com.corvella.engine",
                                     "caches exactBundleID: ~Caches/com.corvella.login.item.x"));
}

TEST_F(Scanner, ReasonsAreTrueOfTheItem) {
    volume.write(library + "Containers/1B2C/.com.apple.containermanagerd.metadata.plist",
                 writeBinaryPropertyList(
                     PropertyListDictionary{{"MCMMetadataIdentifier", "com.corvella.marlin.notes"}}));
    writeJob("/Library/LaunchAgents/a.plist", "com.corvella.marlin.notes.a", "/x");
    writeJob("/Library/LaunchAgents/b.plist", "unrelated", "/opt/com.corvella.marlin.notes/x");
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes");
    using enum MatchReason::Evidence;
    EXPECT_THAT(eachOf(scan().traces, [](const Trace& trace) { return trace.reason.evidence; }),
                ElementsAre(itsName, itsName, record, itsName, label, program));
}

TEST_F(Scanner, LeavesOutWhatMustNotMove) {
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes-\xff");
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes.\xff");
    volume.link(library + "Caches/com.corvella.marlin.notes", "/etc");
    volume.write("/private/etc/hosts", std::string(90'000, 'x'));
    volume.write("/Users/alice/Documents/Marlin Notes/letter", "x");
    volume.link(library + "HTTPStorages", "../Documents"); // a location that links to the user's own folder
    target.name = "CrashReporter";                         // the name of a location
    volume.makeFolder(library + "Application Support/CrashReporter");
    EXPECT_THAT(found(), ElementsAre("caches exactBundleID: ~Caches/com.corvella.marlin.notes"));
    EXPECT_LT(scan().traces.at(2).sizeBytes.value_or(-1), 90'000); // of the link, not of its target
    EXPECT_THAT(scan().skippedNames,
                testing::Contains(Path(library + "Caches/com.corvella.marlin.notes.\xff")));
}

TEST_F(Scanner, LooksIntoNoTemporaryFolderThatCannotBeOne) {
    user.cacheFolder = Path("relative/C");
    user.temporaryFolder = Path("/private/var/folders/\xff/T");
    EXPECT_EQ(userLocations(test::alice()).size(), userLocations(user).size() + 2);
}

TEST_F(Scanner, ContestsAllThatIsLeftOfAnApplicationThatIsNotGoneAfterAll) {
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes");
    target = {.bundleURL = Path("/"), .bundleID = "com.corvella.marlin.notes", .name = "Marlin"};
    const std::string found = "caches exactBundleID: ~Caches/com.corvella.marlin.notes";
    EXPECT_THAT(this->found(), ElementsAre(found + " contested by com.corvella.marlin.notes"));
    installed.clear();
    EXPECT_THAT(this->found(), ElementsAre(found));
}

TEST_F(Scanner, StopsWhenAsked) {
    for (const auto* folder : {"Containers", "Caches", "Logs"})
        volume.makeFolder(library + folder + "/com.corvella.marlin.notes");
    keychain.all = {{"com.corvella.marlin.notes", 1, false}};
    StopSource stop;
    const auto result = scan(stop.token(), [&](const StepProgress& step) {
        if (step.kind == "caches") stop.requestStop();
    });
    ASSERT_EQ(result.traces.size(), 3u); // the bundle, its permissions, the container
    EXPECT_EQ(result.traces[2].category, TraceCategory::containers);
}

} // namespace
} // namespace tidwen
