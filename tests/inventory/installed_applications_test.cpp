#include "base/path.h"
#include "inventory/app_inventory.h"
#include "inventory/installed_applications.h"
#include "platform/code_signatures.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/other_applications.h"

#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/unprivileged.h"
#include "volume/volume_sources.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using test::writeBundle;

struct NoSignatures : CodeSignatures {
    CodeSignature read(const Path&, const Path&) const override { return {}; }
};

class Inventory : public testing::Test {
  protected:
    Inventory() {
        const std::pair<const char*, const char*> listed[] = {
            {"/Applications/Zebra.app", "Zebra"},
            {"/Applications/Élan.app", "élan"},
            {"/Applications/Utilities/Tool.app", "apple.Tool"},
            {"/Applications/Maker/Suite/Deep.APP", "Deep 10"},
            {"/Users/alice/Applications/Own.app", "Deep 9"}};
        for (const auto& [path, name] : listed)
            writeBundle(volume, path, std::string("com.") + name, name);
        volume.makeFolder("/Applications/No Identity.app");
        for (const char* other :
             {"/Applications/A/B/C/TooDeep.app", "/Applications/Zebra.app/Contents/Helpers/In.app",
              "/Applications/.hidden/Hidden.app", "/Users/alice/.Trash/Gone.app", "/Applications/\xff.app"})
            writeBundle(volume, other, "com.example.other", "Other");
        volume.link("/Applications/Link.app", "Zebra.app");
        volume.link("/Applications/Loop", "/Applications");
        volume.write("/Applications/File.app", "x");
    }
    std::vector<Path> bundles() const { return findApplicationBundles(volume.files(), test::alice()); }

    test::TemporaryVolume volume;
    const NoSignatures signatures;
    const VolumeRunningApplications running;
};

TEST_F(Inventory, ListsBundlesButNothingInsideThem) {
    EXPECT_THAT(bundles(),
                ElementsAre(Path("/Applications/Maker/Suite/Deep.APP"), Path("/Applications/No Identity.app"),
                            Path("/Applications/Utilities/Tool.app"), Path("/Applications/Zebra.app"),
                            Path("/Applications/Élan.app"), Path("/Users/alice/Applications/Own.app")));
    EXPECT_THAT(eachOf(readIdentities(volume.files(), bundles()), &InstalledIdentity::name),
                ElementsAre("Deep 10", "apple.Tool", "Zebra", "élan", "Deep 9"));
    const auto seen =
        InstalledBundles(volume.files(), signatures, test::alice()).look(InstalledBundles::Reach::further);
    EXPECT_EQ(eachOf(identitiesOf(*seen, bundles()), &InstalledIdentity::url),
              eachOf(readIdentities(volume.files(), bundles()), &InstalledIdentity::url));
    EXPECT_THAT(eachOf(listInstalledApps(volume.files(), signatures, bundles()), &InstalledApp::name),
                ElementsAre("Deep 9", "Deep 10", "élan", "Zebra"));
}

TEST_F(Inventory, NamesTheFoldersThatItMayNotLookInto) {
    test::giveToUnprivileged(volume.hostRoot());
    test::asUnprivileged([&] {
        std::filesystem::permissions(volume.host("/Applications/Maker"), std::filesystem::perms::none);
        MissedApplications missed;
        findApplicationBundles(volume.files(), test::alice(), &missed);
        EXPECT_THAT(missed.unreadable, ElementsAre(Path("/Applications/Maker")));
        EXPECT_EQ(missed.leftOut, 0u);
    });
}

TEST_F(Inventory, CountsTheApplicationsBeyondItsLimit) {
    for (int i = 0; i < 5'000; ++i)
        std::filesystem::create_directory(volume.host("/Applications/Bulk " + std::to_string(i) + ".app"));
    AppInventory list({volume.files(), signatures, running}, test::alice());
    list.build();
    EXPECT_EQ(list.leftOut(), 6u);
}

} // namespace
} // namespace tidwen
