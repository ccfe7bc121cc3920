#include "inventory/installed_applications.h"

#include "support/fixtures.h"
#include "support/matchers.h"

namespace tidwen {
namespace {

using test::writeBundle;

/// Every application declares a group of its own and one that all share.
class GroupPerBundle : public CodeSignatures {
  public:
    CodeSignature read(const Path& bundle, const Path&) const override {
        return {std::nullopt, {"TEAM." + bundle.stem(), "group.all"}};
    }
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
    const GroupPerBundle signatures;
};

TEST_F(Inventory, ListsBundlesButNothingInsideThem) {
    EXPECT_THAT(bundles(),
                ElementsAre(Path("/Applications/Maker/Suite/Deep.APP"), Path("/Applications/No Identity.app"),
                            Path("/Applications/Utilities/Tool.app"), Path("/Applications/Zebra.app"),
                            Path("/Applications/Élan.app"), Path("/Users/alice/Applications/Own.app")));
    EXPECT_THAT(eachOf(readIdentities(volume.files(), bundles()), &InstalledIdentity::name),
                ElementsAre("Deep 10", "apple.Tool", "Zebra", "élan", "Deep 9"));
    EXPECT_THAT(eachOf(listInstalledApps(volume.files(), signatures, bundles()), &InstalledApp::name),
                ElementsAre("Deep 9", "Deep 10", "élan", "Zebra"));
}

TEST_F(Inventory, GroupsAreThoseOfTheOthers) {
    const std::vector bundles = {Path("/Applications/Zebra.app"), Path("/Applications/Utilities/Tool.app")};
    EXPECT_EQ(groupsOfOthers(volume.files(), signatures, bundles, Path("/applications/zebra.app/")),
              (std::map<std::string, std::string>{{"group.all", "com.apple.Tool"},
                                                  {"team.tool", "com.apple.Tool"}}));
}

} // namespace
} // namespace tidwen
