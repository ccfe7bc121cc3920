#include "base/path.h"
#include "scan/applications/app_target.h"
#include "scan/policy/removability.h"

#include "support/fixtures.h"
#include "support/unprivileged.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace tidwen {
namespace {

using Reason = ImmovableApplication::Reason;

TEST(Removability, SaysWhyAnApplicationStaysAndWhereItIs) {
    const test::TemporaryVolume volume;
    const auto home = std::string("/Users/alice");
    for (const auto* item :
         {"/Applications/Fine.app", "/opt/apps/Real.app", "/Users/alice/Downloads/Got.app",
          "/Users/alice/Library/Mine.app", "/Users/alice/.Trash/Gone.app", "/closed/Kept.app"})
        volume.makeFolder(item);
    test::writeBundle(volume, "/Applications/Suite.app", "com.suite.main", "Suite");
    test::writeBundle(volume, "/Applications/Suite.app/Contents/Helpers/Part.app", "com.suite.part", "Part");
    volume.makeFolder("/Applications/Folder.app/Inner.app"); // the name of a bundle, but not one
    volume.link("/Applications/Linked.app", "../opt/apps/Real.app");
    volume.link("/Applications/Dangling.app", "/Volumes/Away/Dangling.app");
    volume.link("/Applications/Folder", "/opt/apps");
    volume.link("/Users/other", "alice");
    test::giveToUnprivileged(volume.hostRoot());
    std::filesystem::permissions(volume.host("/closed"), std::filesystem::perms(0555));

    using Expected = std::optional<ImmovableApplication>;
    const struct {
        std::string bundle;
        Expected expected;
        std::string home = "/Users/alice";
    } cases[] = {
        {"/Applications/Fine.app", {}},
        {"/applications/../Applications/Fine.app", {}},
        {"/Applications/Linked.app", {{Reason::reachedThroughLink, Path("/opt/apps/Real.app")}}},
        {"/Applications/Folder/Real.app", {{Reason::reachedThroughLink, Path("/opt/apps/Real.app")}}},
        {"/Applications/Dangling.app", {{Reason::reachedThroughLink, Path("/Applications/Dangling.app")}}},
        {home + "/Downloads/Got.app", {{Reason::protectedPlace, Path(home + "/Downloads/Got.app")}}},
        {"/Users/other/Library/Mine.app", {}, "/Users/other"}, // the home itself may be a link
        {"/Users/other/Downloads/Got.app",
         {{Reason::protectedPlace, Path(home + "/Downloads/Got.app")}},
         "/Users/other"},
        {home + "/.Trash/Gone.app", {}},
        {"/Applications/Vanished.app", {}},
        {"/Applications/Suite.app/Contents/Helpers/Part.app",
         {{Reason::partOfBundle, Path("/Applications/Suite.app")}}},
        {"/Applications/Folder.app/Inner.app", {}},
        {"/closed/Kept.app", {{Reason::noRights, Path("/closed/Kept.app")}}},
        {"/", {}}, // an orphan's target has no bundle
    };
    test::asUnprivileged([&] {
        for (const auto& c : cases) {
            auto user = test::alice();
            user.home = Path(c.home);
            AppTarget target;
            target.bundleURL = Path(c.bundle);
            EXPECT_TRUE(whyNotRemovable(target, volume.files(), PathPolicy(user, volume.files()), user,
                                        MoveRights::own)
                        == c.expected)
                << c.bundle;
        }
        AppTarget kept;
        kept.bundleURL = Path("/closed/Kept.app");
        EXPECT_FALSE(whyNotRemovable(kept, volume.files(), PathPolicy(test::alice(), volume.files()),
                                     test::alice(), MoveRights::administrator));
    });
}

} // namespace
} // namespace tidwen
