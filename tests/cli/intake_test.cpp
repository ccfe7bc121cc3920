#include "base/path.h"
#include "base/problem.h"
#include "base/texts.h"
#include "cli/intake.h"
#include "program/host_paths.h"
#include "scan/applications/app_target.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/other_applications.h"

#include "platform/file_code_signatures.h"
#include "settings/file_defaults.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "volume/volume_sources.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using test::TemporaryVolume;

class IntakeTest : public testing::Test {
  protected:
    IntakeTest() {
        add("/Applications/Marlin Notes.app", "com.marlinworks.notes", "Marlin Notes");
        add("/Applications/Caf\u00e9.app", "com.cafesync.mac", "Caf\u00e9 Sync");
        add("/Applications/Twin.app", "com.example.one", "Twin");
        add("/Users/alice/Applications/Twin.app", "com.example.two", "Twin");
        add("/Applications/Clock.app", "com.apple.clock", "Clock");
    }

    void add(const std::string& path, const std::string& bundleID, const std::string& name) {
        test::writeBundle(volume_, path, bundleID, name);
        installed_.push_back({Path(path), bundleID, name});
    }

    ApplicationFinder finder() const { return {volume_.files(), installed_, HostPaths(volume_.hostRoot())}; }

    TemporaryVolume volume_;
    std::vector<InstalledIdentity> installed_;
};

TEST_F(IntakeTest, AWordMeansOneApplicationOrSaysWhyNot) {
    const auto host = [&](const char* path) { return volume_.host(path).string(); };
    volume_.makeFolder("/Applications/Utilities");
    volume_.makeFolder("/Users/alice/Applications/Kept");
    volume_.link("/Applications/Elsewhere", "/Users/alice/Applications/Kept");
    const struct {
        std::string word;
        std::string expected; ///< the Mac path, or the key of the error
    } cases[] = {
        {"/Applications/Marlin Notes.app", "/Applications/Marlin Notes.app"},
        {"/Applications/Marlin Notes.app/", "/Applications/Marlin Notes.app"},
        {"/Applications/./Utilities/../Marlin Notes.app", "/Applications/Marlin Notes.app"},
        {"/Applications/Elsewhere/../Twin.app", "/Users/alice/Applications/Twin.app"}, // past a link
        {"/Applications/Nowhere/../Twin.app", "cli.app.missing"},
        {"/APPLICATIONS/marlin notes.app", "/Applications/Marlin Notes.app"}, // as a Mac's disk has it
        {"/Applications/Cafe\u0301.app", "/Applications/Caf\u00e9.app"},
        {host("/Applications/Twin.app/Contents/.."), "/Applications/Twin.app"},
        {"Marlin Notes", "/Applications/Marlin Notes.app"},
        {"marlin notes.APP", "/Applications/Marlin Notes.app"},
        {"COM.marlinworks.notes", "/Applications/Marlin Notes.app"},
        {"Cafe\u0301 Sync", "/Applications/Caf\u00e9.app"}, // decomposed
        {"caf\u00e9", "/Applications/Caf\u00e9.app"},       // by its file name
        {host("/Applications/Twin.app"), "/Applications/Twin.app"},
        {host("/Users/alice/Applications/Twin.app") + "/", "/Users/alice/Applications/Twin.app"},
        {"com.example.two", "/Users/alice/Applications/Twin.app"},
        {"Twin", "cli.app.ambiguous %@"},
        {"Marlin", "cli.app.similar %@"},
        {"Nobody", "cli.app.unknown"},
        {"", "cli.app.unknown"},
        {volume_.hostRoot().parent_path().string(), "cli.app.missing"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.word);
        const auto found = finder().find(c.word);
        EXPECT_EQ(found ? found->string() : found.error().key, c.expected);
    }
}

TEST_F(IntakeTest, AWordMeansAnIdentifierAsItsBundleSpellsIt) {
    add("/Applications/Same.app", "com.Example.ONE", "Same");
    test::writeBundle(volume_, "/Games/Hidden.app", "com.example.Hidden", "Hidden"); // not in the list
    volume_.makeFolder("/Applications/Empty.app");
    const auto& notes = "com.marlinworks.notes";
    const std::pair<std::string, std::string> cases[] = {
        {"COM.MarlinWorks.notes", notes},
        {"Marlin Notes", notes},
        {"/Applications/Marlin Notes.app", notes},
        {volume_.host("/Applications/Marlin Notes.app").string(), notes},
        {"/Games/Hidden.app", "com.example.Hidden"},
        {"com.example.one", "com.example.one"},
        {"com.Example.ONE", "com.Example.ONE"},
        {"com.example.One", "cli.identifier.ambiguous %@"},
        {"com.example.later", "com.example.later (absent)"},
        {"com.example.app", "com.example.app (absent)"},
        {"com.example.later.plist", "cli.app.unknown"},
        {"", "cli.app.unknown"},
        {"Nobody", "cli.app.unknown"},
        {"Nobody.app", "cli.app.unknown"},
        {"com..double", "cli.app.unknown"},
        {".com.hidden", "cli.app.unknown"},
        {"two words.app", "cli.app.unknown"},
        {"Twin", "cli.app.ambiguous %@"},
        {"/Applications/Empty.app", "cli.app.noIdentifier"},
        {"/Applications/None.app", "cli.app.missing"},
    };
    for (const auto& [word, expected] : cases) {
        const auto found = finder().findIdentifier(word);
        const auto shown = [&] { return found->bundleID + (found->isInstalled ? "" : " (absent)"); };
        EXPECT_EQ(found ? shown() : found.error().key, expected) << word;
    }
}

TEST_F(IntakeTest, RefusedApplicationsDoNotKeepTheOthersOut) {
    test::TemporaryFolder settings;
    test::RecordingLog log;
    FileDefaults defaults(settings.path() / "settings.plist", log);
    ProtectedApps protectedApps(defaults);
    ASSERT_TRUE(protectedApps.toggle("com.cafesync.mac"));
    volume_.write("/Applications/File.app", "no folder");

    const FileCodeSignatures signatures(volume_.files());
    const auto intake =
        loadTargets({"Caf\u00e9 Sync", "Clock", "/Applications/File.app", "Nobody", "Marlin Notes",
                     "com.marlinworks.notes", "/Applications"},
                    finder(), AppTargetLoader(volume_.files(), signatures), readProtection(defaults));

    ASSERT_EQ(intake.targets.size(), 1U) << "two words for one application count once";
    EXPECT_EQ(intake.targets.front().name, "Marlin Notes");
    const auto failures =
        eachOf(intake.failures, [](const Problem& failure) { return failure.text(Texts()); });
    EXPECT_EQ(failures, (std::vector<std::string>{
                            "Nobody: cli.app.unknown", "Clock.app: error.systemApplication",
                            "File.app: error.unreadableBundle", "Applications: error.notAnApplication",
                            "error.protectedApp Caf\u00e9 Sync"}));
}

} // namespace
} // namespace tidwen
