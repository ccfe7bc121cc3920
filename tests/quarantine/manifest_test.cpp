#include "base/path.h"
#include "base/uuid.h"
#include "operations/privileged_runner.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "quarantine/entries.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "support/temporary_folder.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace tidwen::test {
namespace {

const Path runRoot("/Users/alice/.Trash/Tidwen - Notes");
const std::string plist = "/Library/LaunchDaemons/agent.plist";
const Manifest sample{.createdAt = runDate,
                      .quarantineRoot = runRoot,
                      .apps = {{"Notes", "com.example.notes"}},
                      .entries = {bootoutEntry(1, "agent", true, plist),
                                  moveEntry(2, runRoot, "/Library/Caches/it's \"é\"\n")}};
const RemovalJournal sampleJournal{
    .createdAt = runDate, .quarantineRoot = runRoot, .apps = sample.apps, .planned = sample.entries};

std::string edited(std::string text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    if (at == text.npos) ADD_FAILURE() << from;
    return at == text.npos ? text : text.replace(at, from.size(), to);
}

TEST(Manifest, IsWrittenInItsDocumentedForm) {
    EXPECT_EQ(encode(sample), R"({
  "apps" : [
    {
      "bundleID" : "com.example.notes",
      "name" : "Notes"
    }
  ],
  "createdAt" : "2026-11-14T17:26:00Z",
  "entries" : [
    {
      "bundleID" : "com.example.notes",
      "isSystemDomain" : true,
      "kind" : "bootout",
      "launchLabel" : "agent",
      "operationID" : 1,
      "plistPath" : "\/Library\/LaunchDaemons\/agent.plist",
      "requiresRoot" : true,
      "source" : "agent"
    },
    {
      "bundleID" : "com.example.notes",
      "destination" : "\/Users\/alice\/.Trash\/Tidwen - Notes\/0002\/it's \"é\"\n",
      "kind" : "move",
      "operationID" : 2,
      "requiresRoot" : false,
      "source" : "\/Library\/Caches\/it's \"é\"\n"
    }
  ],
  "quarantineRoot" : "\/Users\/alice\/.Trash\/Tidwen - Notes",
  "version" : 2
}
)");
    auto recovered = sample;
    recovered.recoveredAt = runDate + std::chrono::hours(1);
    EXPECT_EQ(decodeManifest(encode(recovered)), recovered);
}

TEST(Manifest, ReadsTheOlderFormOfOneApplication) {
    const auto older =
        decodeManifest(R"({"version": 1, "createdAt": "2026-11-14T17:26:00Z", "bundleID": "old",
        "quarantineRoot": "/T/Tidwen - X", "recoveredAt": null, "extra": [1], "entries": [
        {"operationID": 1, "kind": "move", "source": "/a\/b", "requiresRoot": false},
        {"operationID": 2, "kind": "bootout", "source": "job", "requiresRoot": true, "bundleID": "own"}]})");
    ASSERT_TRUE(older) << older.error().detail;
    EXPECT_EQ(older->apps, (std::vector<AppRecord>{{"App", "old"}}));
    EXPECT_EQ(older->entries[0].source, "/a/b");
    EXPECT_EQ(older->entries[0].bundleID, "old");
    EXPECT_EQ(older->entries[1].bundleID, "own");
}

TEST(Manifest, ReadsWhatAnotherProgramWroteAnew) {
    auto unnamed = edited(encode(sample), R"("apps" : [)", R"("appName" : "Notes", "apps" : null, "x" : [)");
    EXPECT_EQ(decodeManifest(unnamed)->apps, (std::vector<AppRecord>{{"Notes", ""}}));
    EXPECT_EQ(decodeManifest(edited(encode(sample), R"("version" : 2)", R"("version" : 2.0)")), sample);
    EXPECT_FALSE(decodeManifest(edited(encode(sample), R"("version" : 2)", R"("version" : 2.5)")));
    EXPECT_FALSE(decodeManifest(edited(encode(sample), R"("version" : 2)", R"("version" : 1e300)")));
}

TEST(Manifest, IsFoundInAFolderWhoseNameTheDiskSpellsOtherwise) {
    const TemporaryVolume volume;
    const Path composedRoot("/Users/alice/.Trash/Tidwen - Caf\u00e9"),
        decomposedRoot("/Users/alice/.Trash/Tidwen - Cafe\u0301");
    const Manifest written{.createdAt = runDate,
                           .quarantineRoot = composedRoot,
                           .entries = {moveEntry(1, composedRoot, "/Library/Caches/a")}};
    volume.write((decomposedRoot / manifestFileName).string(), encode(written));
    const auto read = readManifest(decomposedRoot, volume.files());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->quarantineRoot, decomposedRoot);
    EXPECT_EQ(read->entries[0], moveEntry(1, decomposedRoot, "/Library/Caches/a"));
}

TEST(Manifest, RefusesWhatIsNotOne) {
    const std::pair<std::string, std::string> edits[] = {
        {R"("name")", R"("title")"},
        {R"("operationID" : 1,)", ""},
        {R"("operationID" : 1)", R"("operationID" : 4294967297)"},
        {R"("operationID" : 1)", R"("operationID" : -99999999999)"},
        {R"("kind" : "move")", R"("kind" : "delete")"},
        {R"("version" : 2)", R"("version" : "2")"},
        {R"("version" : 2)", R"("version" : 2, "version" : 2)"},
        {R"("requiresRoot" : true)", R"("requiresRoot" : 1)"},
        {R"("source" : "agent")", R"("source" : [])"},
        {R"("launchLabel" : "agent")", R"("launchLabel" : 7)"},
        {"2026-11-14T17:26:00Z", "yesterday"},
        {R"(\/Library\/Caches)", R"(\/Library\u0000\/Caches)"},
        {R"(\/Library\/Caches)", R"(\/)" + std::string(5000, 'a')},
        {R"(\/Library\/Launch)", "Launch"},
        {R"(Notes\/0002)", R"(Other\/0002)"},
        {R"(Notes\/0002)", R"(Notes\/..\/0002)"},
        {R"(Notes\/0002\/it's \"é\"\n)", "Notes"},
        {R"(Notes\/0002\/it's \"é\"\n)", R"(Notes\/tidwen-manifest.json)"},
        {R"("quarantineRoot" : "\/Users\/alice\/.Trash\/Tidwen - Notes")", R"("quarantineRoot" : "\/")"},
    };
    for (const auto& [from, to] : edits)
        EXPECT_FALSE(decodeManifest(edited(encode(sample), from, to))) << to;
    for (const auto* place : {R"(Library\/Caches)", R"(\/Library\/..\/Caches)"}) {
        const auto at = [&](const std::string& text) { return edited(text, R"(\/Library\/Caches)", place); };
        EXPECT_TRUE(decodeManifest(at(encode(sample)))) << "an undo refuses this entry alone: " << place;
        EXPECT_FALSE(decodeJournal(at(encode(sampleJournal)))) << place;
    }
    auto missing = sample;
    missing.entries[1].isMissing = true;
    EXPECT_EQ(decodeManifest(encode(missing)), missing);
    auto job = missing;
    job.entries.push_back(bootoutEntry(3, "agent", false, missing.entries[1].source));
    job.entries.back().isMissing = true;
    EXPECT_EQ(decodeManifest(encode(job)), job);
    job.entries.back().plistPath = "/Library/other.plist";
    EXPECT_FALSE(decodeManifest(encode(job))) << "the run did not move its file";
    for (const auto& [from, to] : {std::pair(R"("kind" : "move")", R"("kind" : "bootout")"),
                                   std::pair(R"(Notes\/0002)", R"(Other\/0002)")})
        EXPECT_FALSE(decodeManifest(edited(encode(missing), from, to))) << to;
    auto repeated = sampleJournal;
    for (int number = 101; number <= 200; ++number)
        repeated.planned.push_back(moveEntry(number, repeated.quarantineRoot, "/Library/Caches/one"));
    EXPECT_TRUE(decodeJournal(encode(repeated)));
    repeated.planned.push_back(moveEntry(201, repeated.quarantineRoot, "/Library/Caches/one"));
    EXPECT_FALSE(decodeJournal(encode(repeated))) << "would make every look-up of it long";
    repeated.planned.back().source = "/Library/Caches/two";
    EXPECT_TRUE(decodeJournal(encode(repeated)));
    repeated.planned.back().destination = repeated.planned[repeated.planned.size() - 2].destination;
    EXPECT_FALSE(decodeJournal(encode(repeated))) << "two items in one place";
    for (const auto* key : {"createdAt", "quarantineRoot", "version", "entries"})
        EXPECT_FALSE(decodeManifest(edited(encode(sample), key, "x"))) << key;
    for (const auto* key : {"createdAt", "quarantineRoot", "version", "planned", "apps"})
        EXPECT_FALSE(decodeJournal(edited(encode(sampleJournal), key, "x"))) << key;
}

TEST(Manifest, CutOffAnywhereIsRefused) {
    const auto manifest = encode(sample), journal = encode(sampleJournal);
    EXPECT_EQ(decodeJournal(journal), sampleJournal);
    for (std::size_t kept = 0; kept < manifest.rfind('}'); ++kept)
        ASSERT_FALSE(decodeManifest(manifest.substr(0, kept))) << kept;
    for (std::size_t kept = 0; kept < journal.rfind('}'); ++kept)
        ASSERT_FALSE(decodeJournal(journal.substr(0, kept))) << kept;
}

TEST(Manifest, IsAPlainFileOfItsOwnFolder) {
    TemporaryVolume volume;
    ASSERT_TRUE(writeManifest(sample, runRoot / manifestFileName, volume.files()));
    EXPECT_EQ(readManifest(runRoot, volume.files()), sample);
    const Path other("/Users/alice/.Trash/Tidwen - Copy"), linked("/Users/alice/.Trash/Tidwen - Link");
    volume.write((other / manifestFileName).string(), encode(sample));
    volume.link((linked / manifestFileName).string(), (runRoot / manifestFileName).string());
    volume.makeFolder((linked / journalFileName).string());
    EXPECT_FALSE(readManifest(other, volume.files()));
    EXPECT_FALSE(readManifest(linked, volume.files()));
    EXPECT_FALSE(readJournal(linked, volume.files()));

    auto unwritable = sampleJournal;
    unwritable.planned[1].source = "/Library/Caches/\xff";
    const auto written = writeJournal(unwritable, runRoot / journalFileName, volume.files());
    EXPECT_EQ(written.error().fault, FileFault::notSupported) << "it would read back as another path";

    auto tooLong = sampleJournal;
    tooLong.planned.resize(maxManifestEntries + 1, sampleJournal.planned[0]);
    EXPECT_EQ(writeJournal(tooLong, runRoot / journalFileName, volume.files()).error().fault,
              FileFault::tooLarge);
    EXPECT_FALSE(volume.exists((runRoot / journalFileName).string()));
}

TEST(Manifest, TakesTheReversibleStepsThatSucceeded) {
    const auto operation = [](int id, RemovalOperation::Kind kind, Uuid trace = Uuid::random()) {
        return RemovalOperation{
            .id = id, .kind = kind, .displayName = "", .traceID = trace, .bundleID = "com.example.notes"};
    };
    const Uuid job = Uuid::random();
    const std::vector plan = {operation(1, operation::ResetPermissions{"com.example.notes"}),
                              operation(2, operation::Bootout{"job", false}, job),
                              operation(3, operation::Bootout{"loose", false}),
                              operation(4, operation::Move{Path(plist), runRoot / "0004/agent.plist"}, job),
                              operation(5, operation::Move{Path("/Library/b"), runRoot / "0005/b"})};
    const std::vector all = {bootoutEntry(2, "job", false, plist), bootoutEntry(3, "loose", false, {}),
                             moveEntry(4, runRoot, plist), moveEntry(5, runRoot, "/Library/b")};
    EXPECT_EQ(manifestEntries(plan), all);
    EXPECT_EQ(manifestEntries(plan, {OperationResult::success(1), OperationResult::success(2),
                                     OperationResult::failure(4, {"failure.unknown"}),
                                     OperationResult::success(5)}),
              (std::vector{all[0], all[3]}));
}

} // namespace
} // namespace tidwen::test
