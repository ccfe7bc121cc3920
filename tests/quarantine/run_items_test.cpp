#include "base/path.h"
#include "operations/recording_runner.h"
#include "quarantine/entries.h"
#include "quarantine/manifest.h"
#include "quarantine/run_items.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"
#include "support/temporary_folder.h"
#include "support/unprivileged.h"

#include <string>
#include <utility>

namespace tidwen::test {
namespace {

TEST(RunItems, AreNamedByPlaceEndOfPlaceOrApplication) {
    Manifest manifest{.quarantineRoot = Path("/q"), .apps = {{"Notes", "com.example.notes"}}};
    int number = 0;
    for (const auto* source : {"/Users/a/Caches/One", "/Users/a/Logs/One", "/Users/a/Two"})
        manifest.entries.push_back(moveEntry(++number, Path("/q"), source));
    manifest.entries.back().bundleID = "other";
    manifest.apps.push_back({"Sketch", "com.example.sketch"});
    manifest.entries.front().sharedWith = {"com.example.sketch"};
    manifest = decodeManifest(encode(manifest)).value();
    const struct {
        std::string word;
        std::size_t found;
        std::string refusal;
    } cases[] = {{"/users/A/two", 1, ""},
                 {"two", 1, ""},
                 {"Logs/one", 1, ""},
                 {"One", 0, "history.item.ambiguous %@ %@"},
                 {"notes", 2, ""},
                 {"COM.example.notes", 2, ""},
                 {"Sketch", 1, ""},
                 {"ne", 0, "history.item.unknown %@"},
                 {"", 0, "history.item.unknown %@"}};
    for (const auto& c : cases) {
        const auto found = findItems(manifest, {c.word});
        EXPECT_EQ(found ? found->size() : 0, c.found) << c.word;
        EXPECT_EQ(found ? "" : found.error().key, c.refusal) << c.word;
    }
}

TEST(RunItems, BothFilesOfAReceiptComeTogether) {
    const std::string receipt = "/private/var/db/receipts/com.example.a";
    Manifest manifest{.quarantineRoot = Path("/q")};
    int number = 0;
    for (const auto& source : {receipt + ".bom", receipt + ".plist", receipt + ".b.bom"})
        manifest.entries.push_back(moveEntry(++number, Path("/q"), source));
    const ItemChoice both{receipt + ".bom", receipt + ".plist"};
    EXPECT_EQ(withWholeReceipts({receipt + ".plist"}, manifest), both);
    EXPECT_EQ(withWholeReceipts({}, manifest), ItemChoice());
}

TEST(RunItems, MayBeBesideTheirOldPlaceWhereTheNextNameIsTaken) {
    const TemporaryVolume volume;
    const Manifest manifest{.quarantineRoot = Path("/q"),
                            .entries = {moveEntry(1, Path("/q"), "/Library/a.plist")}};
    volume.write("/Library/a.plist", "");
    EXPECT_FALSE(mayBeBeside(runItems(manifest, volume.files())[0], volume.files()));
    volume.write("/Library/a 2.plist", "");
    EXPECT_TRUE(mayBeBeside(runItems(manifest, volume.files())[0], volume.files()));
}

} // namespace
} // namespace tidwen::test
