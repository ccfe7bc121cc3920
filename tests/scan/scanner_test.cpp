#include "scan/matching/residue_scanner.h"

#include "base/text.h"
#include "platform/budgeted_files.h"
#include "scan/policy/search_location.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"
#include "support/unprivileged.h"

#include <unistd.h>

namespace tidwen {
namespace {

const std::string library = "/Users/alice/Library/";
const std::string bundle = "/Applications/Marlin Notes.app";

struct FakeReceipts : Receipts {
    std::vector<std::string> packageIDs() const override { return eachOf(all, &Receipt::packageID); }
    std::optional<Receipt> read(const std::string& packageID) const override {
        for (const auto& receipt : all)
            if (receipt.packageID == packageID) return receipt;
        return std::nullopt;
    }
    std::vector<Receipt> all;
};

struct FakeExtensions : SystemExtensions {
    std::vector<SystemExtensionRecord> list() const override { return all; }
    std::vector<SystemExtensionRecord> all;
};

struct GroupsByBundle : CodeSignatures {
    CodeSignature read(const Path& place, const Path&) const override {
        const auto found = groups.find(place);
        return {std::nullopt, found == groups.end() ? std::vector<std::string>() : found->second};
    }
    std::map<Path, std::vector<std::string>> groups;
};

/// The paths of a list, which colons part.
std::vector<std::string> pathsOf(const std::string& list) {
    std::vector<std::string> paths;
    std::istringstream words(list);
    for (std::string path; std::getline(words, path, ':');)
        paths.push_back(path);
    return paths;
}

class Scanner : public testing::Test {
  protected:
    Scanner() { test::writeBundle(volume, bundle, "com.corvella.marlin.notes", "Marlin Notes"); }

    ScanResult scan(const StopToken& stop = {}, const ResidueScanner::Progress& progress = {}) {
        const auto bundles =
            std::make_shared<const BundleSnapshot>(volume.files(), signatures, installed, coverage);
        ResidueScanner scanner({volume.files(), receipts, keychain, extensions, texts, log}, user, bundles);
        return scanner.scan(target, stop, progress, together);
    }

    /// "category reason value: what" of every trace that is neither the bundle nor its permissions.
    std::vector<std::string> found() {
        std::vector<std::string> lines;
        for (const auto& trace : scan().traces) {
            if (trace.category == TraceCategory::application || trace.category == TraceCategory::permissions)
                continue;
            auto what = trace.displayName;
            if (what.starts_with(library)) what = "~" + what.substr(library.size());
            lines.push_back(
                fmt::format("{} {}: {}{}{}{}", name(trace.category), name(trace.reason.kind), what,
                            trace.requiresRoot ? " root" : "",
                            std::holds_alternative<action::BootoutAndMove>(trace.action) ? " job" : "",
                            trace.contestedBy ? " contested by " + trace.contestedBy->bundleID : ""));
        }
        return lines;
    }

    void writeJob(const std::string& plist, const char* label, const char* program) {
        volume.write(plist,
                     writeXmlPropertyList(PropertyListDictionary{{"Label", label}, {"Program", program}}));
    }

    test::TemporaryVolume volume;
    test::RecordingLog log;
    Texts texts;
    FakeReceipts receipts;
    test::FakeKeychain keychain;
    FakeExtensions extensions;
    std::vector<OwningBundle> installed = {test::owner(bundle, "com.corvella.marlin.notes", "Marlin Notes")};
    std::vector<AppTarget> together;
    BundleCoverage coverage;
    GroupsByBundle signatures;
    UserEnvironment user = test::alice();
    AppTarget target{.bundleURL = Path(bundle),
                     .bundleID = "com.corvella.marlin.notes",
                     .name = "Marlin Notes",
                     .executableName = "MarlinEngine"};
};

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

    std::vector<std::string> phases;
    const auto result = scan({}, [&](const std::string& phase) { phases.push_back(phase); });
    EXPECT_EQ(phases.front(), "category.supportFiles");
    EXPECT_THAT(std::vector(phases.end() - 4, phases.end()),
                ElementsAre("category.receipts", "category.keychain", "category.systemExtensions",
                            "category.permissions"));
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
    container("Containers/com.corvella.marlin.notes", "com.other.app"); // says whose it is, whatever its name
    container("Daemon Containers/3D4E", "com.corvella.marlin.notes");
    volume.write(
        library + "Containers/com.corvella.marlin.notes.share/.com.apple.containermanagerd.metadata.plist",
        "?");
    const PropertyListDictionary parameters = {{"application_container_id", "com.corvella.marlin.notes.old"}};
    const PropertyListDictionary validation = {{"SandboxProfileDataValidationParametersKey", parameters}};
    volume.write(
        library + "Containers/5F/Container.plist",
        writeXmlPropertyList(PropertyListDictionary{{"SandboxProfileDataValidationInfo", validation}}));
    container("Containers/com.apple.mail", "com.corvella.marlin.notes"); // macOS's, whatever it says
    container("Containers/com.third.app", "com.corvella.marlin.notes");
    installed.push_back(test::owner("/Applications/Third.app", "com.third.app", "Third"));
    EXPECT_THAT(found(), ElementsAre("containers exactBundleID: ~Containers/1B2C",
                                     "containers exactBundleID: ~Containers/5F",
                                     "containers exactBundleID: ~Containers/com.corvella.marlin.notes.share",
                                     "containers exactBundleID: ~Containers/com.third.app contested by "
                                     "com.third.app",
                                     "containers exactBundleID: ~Daemon Containers/3D4E"));
}

TEST_F(Scanner, JudgesJobsByTheirProgramsPlace) {
    installed.push_back(test::owner("/Applications/Other.app", "com.other.app", "Other"));
    target.name = "Alice";
    const struct {
        const char *label, *program, *claimant; // none: not the target's
        const char* file = nullptr;             // none: named after the label
    } cases[] = {
        {"a.job", "/opt/tools/Alice/run", ""},
        {"b.job", "/Users/alice/bin/sync", nullptr}, // the user is called so too
        {"c.job", "/usr/bin/alice", nullptr},
        {"d.job", "/usr/bin/com.corvella.marlin.notes", ""},
        {"e.job", "/Applications/Other.app/Contents/Alice/x", "com.other.app"},
        {"com.corvella.marlin.notes.i", "/opt/com.other.app/i", "com.other.app"}, // whose folder it is in
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

    target.name = "Contents"; // what every bundle holds
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
    // By links another application is installed, and a folder of them.
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

TEST_F(Scanner, KnowsItsBundleFromACopyOfIt) {
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes");
    volume.link("/Applications/Link.app", "Marlin Notes.app");
    target.bundleURL = Path("/Applications/Link.app");
    EXPECT_FALSE(scan().traces.at(2).contestedBy);

    // The one in the Trash goes, the one that stays needs what both share.
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

    // Both go: neither claims anything from the other.
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
        {"opt/tools/bounce", "only listed, com.brightwell.studio"}, // in its package too
        {"opt/tools/marlin notes", "com.brightwell.studio"},        // likewise
        {"Users/Shared/Brightwell Studio/a", "only listed, com.brightwell.studio"},
        {"opt/tools/com.brightwell.studio.b", "only listed, com.brightwell.studio"},
        {"opt/Marlin Notes/c", ""},
        // Bundles, known by themselves whether the service found them or not.
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
        const char* name = nullptr; // by which it was found too
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
    const auto unknown = library + "Application Support/MarlinEngine/a/b/Deep.app"; // to the service
    test::writeBundle(volume, unknown, "com.other.deep", "Deep");
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
            "supportFiles exactBundleID: ~Application Scripts/" + identifier + " contested by " + identifier
                + ".pro",
            "supportFiles nameToken: /Users/Shared/Marlin Notes contested by com.other.two",
            "supportFiles executableName: /Users/Shared/MarlinEngine"));
    together.push_back({.bundleURL = Path(unknown), .bundleID = "com.other.deep"});
    for (const auto& each : bundles) // all of them go
        together.push_back({.bundleURL = Path(each.place), .bundleID = each.bundleID});
    for (const auto& trace : scan().traces)
        EXPECT_FALSE(trace.contestedBy) << trace.displayName;
}

TEST_F(Scanner, LeavesFoldersOutOfWhichJobsOfOthersRun) {
    installed.push_back(test::owner("/Applications/Other.app", "com.other.app", "Other"));
    const struct {
        const char *folder, *label, *claimant;
        bool isScript = false, isGone = false;
    } cases[] = {
        {"Caches", "com.other.app.agent", " contested by com.other.app"},
        {"HTTPStorages", "org.script", " contested by org.script", true},
        {"WebKit", "org.mine", ""}, // the program's place makes the job the target's
        {"Logs", "com.other.app.gone", "", false, true},
    };
    std::vector<std::string> expected;
    for (const auto& c : cases) {
        const auto folder = library + c.folder + "/com.corvella.marlin.notes";
        volume.makeFolder(folder);
        if (!c.isGone) volume.write(folder + "/run", "x");
        PropertyListDictionary job = {{"Label", c.label}, {"Program", folder + "/run"}};
        if (c.isScript)
            job = {{"Label", c.label}, {"ProgramArguments", PropertyListArray{"/bin/sh", folder + "/run"}}};
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

TEST_F(Scanner, SaysWhatItCannotKnowOrRemove) {
    EXPECT_FALSE(scan().immovable);
    coverage.damaged = {Path("/Applications/Broken.app")};
    test::writeBundle(volume, "/Users/alice/Downloads/Marlin Notes.app", "com.corvella.marlin.notes",
                      "Marlin Notes");
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes");
    target.bundleURL = Path("/Users/alice/Downloads/Marlin Notes.app");
    installed.clear();
    const auto result = scan();
    EXPECT_EQ(result.immovable,
              (ImmovableApplication{ImmovableApplication::Reason::protectedPlace, target.bundleURL}));
    EXPECT_EQ(result.traces.size(), 3u);
    EXPECT_EQ(result.owners, coverage);
    EXPECT_TRUE(log.contains("Bundle does not say whose it is: /Applications/Broken.app"));
}

TEST_F(Scanner, SaysWhichInsidesAndJobsItCouldNotRead) {
    const std::string other = "/Applications/Other.app", damaged = library + "LaunchAgents/damaged.plist";
    test::writeBundle(volume, other, "com.other.app", "Other");
    volume.write(other + "/Contents/PlugIns/Shared.appex/Contents/Info.plist", "?");
    test::writeBundle(volume, bundle + std::string("/Contents/PlugIns/Shared.appex"), "net.shared.helper",
                      "S");
    volume.write(library + "Preferences/net.shared.helper.plist", "x");
    volume.write(damaged, "?");
    installed.push_back(test::owner(other, "com.other.app", "Other"));
    const auto result = scan();
    EXPECT_THAT(result.owners.unreadable, ElementsAre(Path(other)));
    EXPECT_THAT(result.unreadableLocations, ElementsAre(Path(damaged)));
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
    volume.link(library + "HTTPStorages", "../Documents"); // a location that leads to the user's own
    target.name = "CrashReporter";                         // the name of a location
    volume.makeFolder(library + "Application Support/CrashReporter");
    EXPECT_THAT(found(), ElementsAre("caches exactBundleID: ~Caches/com.corvella.marlin.notes"));
    EXPECT_LT(scan().traces.at(2).sizeBytes.value_or(-1), 90'000); // of the link, not of what it leads to
    EXPECT_THAT(scan().skippedNames,
                testing::Contains(Path(library + "Caches/com.corvella.marlin.notes.\xff")));
}

TEST_F(Scanner, NamesLocationsThatCannotBeSearched) {
    using Names = std::vector<Path>;
    volume.makeFolder("/Volumes/Ext/C");
    volume.makeFolder("/Users/bob/C");
    volume.makeFolder("/opt/C");
    const std::string caches = library + "Caches", audio = library + "Audio";
    const struct {
        const char* why;
        std::string place;
        const char* target;
        Names missed;
    } cases[] = {
        {"a link to a disk that is away", caches, "/Volumes/Away/C", {Path(caches)}},
        {"to another disk", caches, "/Volumes/Ext/C", {Path(caches)}},
        {"in circles", caches, "Caches", {Path(caches)}},
        {"into another home", caches, "/Users/bob/C", {Path(caches)}},
        {"into another home, where nothing is", caches, "/Users/bob/D", {Path(caches)}},
        {"to the user's own", caches, "../Documents", {Path(caches)}},
        {"out of the volume", caches, "/../../../../../../../etc", {Path(caches)}},
        {"a plain file", caches, nullptr, {Path(caches)}},
        {"a link in the way to a location",
         "/Library/Audio",
         "/Volumes/Away/Audio",
         {Path("/Library/Audio/Plug-Ins/Components"), Path("/Library/Audio/Plug-Ins/HAL"),
          Path("/Library/Audio/Plug-Ins/VST"), Path("/Library/Audio/Plug-Ins/VST3")}},
        {"a link to where items may be taken", caches, "/opt/C", {}},
        {"a way that ends before the location", library + "Logs/here", nullptr, {}},
    };
    volume.makeFolder("/Users/alice/Documents");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        if (c.target)
            volume.link(c.place, c.target);
        else
            volume.write(c.place, "a file");
        EXPECT_EQ(scan().unreadableLocations, c.missed);
        std::filesystem::remove(volume.host(c.place));
    }
}

TEST_F(Scanner, NamesWhatItCannotReadInParts) {
    const auto maker = library + "Application Support/Corvella";
    const auto container = library + "Containers/6F0A2B6C-0A1B-4C2D-8E3F-001122334455";
    volume.makeFolder(maker + "/com.corvella.marlin.notes");
    volume.makeFolder(container);
    volume.makeFolder(library + "Containers/com.other.app");
    receipts.all = {{"com.corvella.marlin.notes", Path("/"), {}, Path("/private/var/db/receipts/a.bom")},
                    {"com.other.app", Path("/"), {}, Path("/private/var/db/receipts/b.bom")}};
    test::giveToUnprivileged(volume.hostRoot());
    for (const auto& closed : {maker, container, library + "Containers/com.other.app"})
        std::filesystem::permissions(volume.host(closed), std::filesystem::perms::none);
    test::asUnprivileged([&] {
        EXPECT_THAT(scan().unreadableLocations,
                    ElementsAre(Path(maker), Path(container), Path("/private/var/db/receipts/a.bom")));
    });
}

TEST_F(Scanner, NamesLocationsThatItCannotRead) {
    volume.makeFolder(library + "Caches/com.corvella.marlin.notes");
    volume.makeFolder(library + "Logs/com.corvella.marlin.notes");
    test::giveToUnprivileged(volume.hostRoot());
    std::filesystem::permissions(volume.host(library + "Caches"), std::filesystem::perms::none);
    test::asUnprivileged([&] {
        const auto result = scan();
        EXPECT_THAT(result.unreadableLocations, ElementsAre(Path(library + "Caches")));
        EXPECT_TRUE(log.contains("Unreadable location /Users/alice/Library/Caches"));
        EXPECT_EQ(result.traces.size(), 3u);
    });
}

TEST_F(Scanner, ClaimsNothingThatItsBudgetLeavesOut) {
    const auto metadata = writeXmlPropertyList(PropertyListDictionary{
        {"MCMMetadataIdentifier", "com.corvella.marlin.notes.part"}, {"padding", std::string(10'000, 'x')}});
    for (int i = 0; i < 20; ++i)
        volume.write(library + "Containers/com.corvella.marlin.notes." + std::to_string(i)
                         + "/.com.apple.containermanagerd.metadata.plist",
                     metadata);
    const BudgetedFiles files(volume.files(), ReadBudget({.bytes = 50'000}));
    ResidueScanner scanner({files, receipts, keychain, extensions, texts, log}, test::alice(), {});
    const auto result = scanner.scan(target);
    EXPECT_GT(result.leftOut, 0u);
    EXPECT_LT(result.traces.size(), 20u);
    EXPECT_TRUE(log.contains("Too much to read"));
}

TEST_F(Scanner, LooksIntoNoTemporaryFolderThatCannotBeOne) {
    user.cacheFolder = Path("relative/C");
    user.temporaryFolder = Path("/private/var/folders/\xff/T");
    EXPECT_EQ(userLocations(test::alice()).size(), userLocations(user).size() + 2);
}

TEST_F(Scanner, StopsWhenAsked) {
    for (const auto* folder : {"Containers", "Caches", "Logs"})
        volume.makeFolder(library + folder + "/com.corvella.marlin.notes");
    keychain.all = {{"com.corvella.marlin.notes", 1, false}};
    StopSource stop;
    const auto result = scan(stop.token(), [&](const std::string& phase) {
        if (phase == "category.caches") stop.requestStop();
    });
    ASSERT_EQ(result.traces.size(), 3u); // the bundle, its permissions, the container
    EXPECT_EQ(result.traces[2].category, TraceCategory::containers);
}

} // namespace
} // namespace tidwen
