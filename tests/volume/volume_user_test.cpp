#include "volume/volume_user.h"

#include "support/matchers.h"
#include "support/temporary_folder.h"

#include <unistd.h>

namespace tidwen {
namespace {

using Kind = VolumeUserError::Kind;

TEST(VolumeUser, IsTheOneWithAHome) {
    test::TemporaryVolume volume;
    for (const char* folder :
         {"/Users/Shared/Library", "/Users/Guest/Library", "/Users/.hidden/Library", "/Users/empty"})
        volume.makeFolder(folder);
    volume.write("/Users/file", "");
    EXPECT_EQ(findVolumeUser(volume.files(), std::nullopt).error().kind, Kind::noHome);

    volume.makeFolder("/Users/alice/Library");
    volume.link("/Users/also-alice", "alice");
    const auto alice = findVolumeUser(volume.files(), std::nullopt);
    ASSERT_TRUE(alice);
    EXPECT_EQ(alice->home, Path("/Users/alice"));
    EXPECT_EQ(alice->userID, ::geteuid());

    volume.makeFolder("/Users/Zoë/Library");
    volume.makeFolder("/Users/bob/Library");
    const auto several = findVolumeUser(volume.files(), std::nullopt);
    ASSERT_FALSE(several);
    EXPECT_EQ(several.error().kind, Kind::severalHomes);
    EXPECT_THAT(several.error().candidates,
                ElementsAre(Path("/Users/Zoë"), Path("/Users/alice"), Path("/Users/bob")));
}

TEST(VolumeUser, MayBeNamed) {
    test::TemporaryVolume volume;
    volume.makeFolder("/Volumes/Data/home of bob");
    volume.makeFolder("/Users/alice/Library");
    volume.write("/Users/file", "");
    volume.link("/Users/dangling", "nowhere");
    const auto bob = findVolumeUser(volume.files(), Path("/Volumes/Data/../Data/home of bob/"));
    ASSERT_TRUE(bob);
    EXPECT_EQ(bob->home, Path("/Volumes/Data/home of bob"));
    for (const char* wrong : {"/Users/file", "/Users/none", "/Users/dangling", "Users/alice"}) {
        SCOPED_TRACE(wrong);
        const auto refused = findVolumeUser(volume.files(), Path(wrong));
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().kind, Kind::notAFolder);
        EXPECT_EQ(refused.error().home, Path(wrong));
    }
}

TEST(VolumeUser, HasThePairOfTemporaryFoldersThatIsSurelyHers) {
    test::TemporaryVolume volume;
    volume.makeFolder("/Users/alice/Library");
    const auto user = [&] {
        return findVolumeUser(volume.files(), std::nullopt).value_or(UserEnvironment{});
    };
    volume.makeFolder("/private/var/folders/zz/nothing-in-it");
    EXPECT_EQ(user().cacheFolder, std::nullopt);

    volume.makeFolder("/private/var/folders/ab/first/C");
    volume.makeFolder("/private/var/folders/ab/first/T");
    EXPECT_EQ(user().cacheFolder, Path("/private/var/folders/ab/first/C"));
    EXPECT_EQ(user().temporaryFolder, Path("/private/var/folders/ab/first/T"));

    volume.makeFolder("/private/var/folders/cd/second/T");
    EXPECT_EQ(user().cacheFolder, std::nullopt) << "two pairs of one owner";
    EXPECT_EQ(user().temporaryFolder, std::nullopt);

    if (::geteuid() != 0) GTEST_SKIP() << "only root can give a folder to another user";
    ASSERT_EQ(::chown(volume.host("/Users/alice").c_str(), 501, 20), 0);
    EXPECT_EQ(user().temporaryFolder, std::nullopt) << "pairs of somebody else";
    ASSERT_EQ(::chown(volume.host("/private/var/folders/cd/second").c_str(), 501, 20), 0);
    EXPECT_EQ(user().userID, 501u);
    EXPECT_EQ(user().cacheFolder, std::nullopt);
    EXPECT_EQ(user().temporaryFolder, Path("/private/var/folders/cd/second/T"));
}

} // namespace
} // namespace tidwen
