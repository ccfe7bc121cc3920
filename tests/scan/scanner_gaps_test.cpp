// What a scan could not see is reported.

#include "base/path.h"
#include "base/property_list.h"
#include "platform/budgeted_files.h"
#include "platform/read_budget.h"
#include "scan/matching/residue_scanner.h"
#include "scan/policy/removability.h"
#include "scan/scanner_fixture.h"

#include "support/unprivileged.h"

#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace tidwen {
namespace {

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
    volume.write("/private/var/db/receipts/a.bom", "damaged");
    receipts.all = {
        {"com.corvella.marlin.notes", Path("/"), {}, Path("/private/var/db/receipts/a.bom")},
        {"com.corvella.marlin.notes.missing", Path("/"), {}, Path("/private/var/db/receipts/c.bom")},
        {"com.other.app", Path("/"), {}, Path("/private/var/db/receipts/b.bom")}};
    test::giveToUnprivileged(volume.hostRoot());
    for (const auto& closed : {maker, container, library + "Containers/com.other.app"})
        std::filesystem::permissions(volume.host(closed), std::filesystem::perms::none);
    test::asUnprivileged([&] {
        EXPECT_THAT(scan().unreadableLocations,
                    ElementsAre(Path(maker), Path(container), Path(library + "Containers/com.other.app"),
                                Path("/private/var/db/receipts/a.bom")));
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

} // namespace
} // namespace tidwen
