#include "base/path.h"
#include "platform/user_environment.h"
#include "volume/volume_user.h"

#include "base/property_list.h"
#include "support/matchers.h"
#include "support/temporary_folder.h"

#include <optional>
#include <string>
#include <tuple>
#include <unistd.h>
#include <utility>

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

std::string account(const std::string& home, const std::string& number) {
    return writeBinaryPropertyList(
        PropertyListDictionary{{"home", PropertyListArray{home}}, {"uid", PropertyListArray{number}}});
}

TEST(VolumeUser, MayBeNamed) {
    test::TemporaryVolume volume;
    const std::string accounts = "/private/var/db/dslocal/nodes/Default/users/";
    for (const char* folder :
         {"/Volumes/Data/home of bob", "/Volumes/Data/nobodys", "/Users/alice/Library", "/Users/Shared/x",
          "/System/Library", "/Library/WebServer", "/Volumes/service"})
        volume.makeFolder(folder);
    volume.write("/Users/file", "");
    volume.link("/Users/dangling", "nowhere");
    volume.link("/Users/linked", "alice");
    volume.link("/People", "Users");
    volume.write(accounts + "bob.plist", account("/Volumes/Data/home of bob", "502"));
    volume.write(accounts + "_service.plist", account("/Volumes/service", "70"));
    for (const char* system : {"/", "/System", "/System/Library", "/Library/WebServer", "/Users",
                               "/Users/Shared", "/Users/Shared/x", "/People/alice", "/Users/linked"})
        volume.write(accounts + Path(system).lastComponent().substr(1) + ".plist", account(system, "503"));
    volume.write(accounts + "damaged.plist", "damaged");

    const std::pair<const char*, const char*> homes[] = {
        {"/Users/alice/", "/Users/alice"}, {"/Volumes/Data//home of bob/.", "/Volumes/Data/home of bob"}};
    for (const auto& [given, home] : homes) {
        const auto user = findVolumeUser(volume.files(), Path(given));
        ASSERT_TRUE(user) << given;
        EXPECT_EQ(user->home, Path(home));
    }
    for (const auto& [wrong, kind] :
         {std::pair("/Users/file", Kind::notAFolder), std::pair("/Users/none", Kind::notAFolder),
          std::pair("/Users/dangling", Kind::linked), std::pair("/Users/linked", Kind::linked),
          std::pair("Users/alice", Kind::notAPath)}) {
        SCOPED_TRACE(wrong);
        const auto refused = findVolumeUser(volume.files(), Path(wrong));
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().kind, kind);
        EXPECT_EQ(refused.error().home, Path(wrong));
    }
    for (const char* wrong :
         {"/", "/Users", "/Users/Shared", "/Users/shared", "/Users/Shared/x", "/System", "/System/Library",
          "/Library/WebServer", "/People/alice", "/Users/alice/Library", "/Users/../Users/alice",
          "/Users/alice/..", "/Volumes/Data/nobodys", "/Volumes/service"}) {
        const auto refused = findVolumeUser(volume.files(), Path(wrong));
        ASSERT_FALSE(refused) << wrong;
        if (volume.exists(wrong)) {
            const bool isIndirect = std::string(wrong).find("..") != std::string::npos;
            EXPECT_EQ(refused.error().kind, isIndirect ? Kind::indirect : Kind::notAHome) << wrong;
        }
    }
}

TEST(VolumeUser, KnowsTheHomesOfOthersThatAccountsName) {
    test::TemporaryVolume volume;
    const std::string accounts = "/private/var/db/dslocal/nodes/Default/users/";
    volume.makeFolder("/Users/alice/Library");
    volume.makeFolder("/private/srv/homes/carl");
    volume.link("/srv", "private/srv");
    for (const auto& [name, home, number] :
         {std::tuple("alice", "/Users/alice", "501"), std::tuple("carl", "/srv/homes/carl/", "502"),
          std::tuple("_web", "/Library/WebServer", "70"), std::tuple("_db", "/Volumes/db", "71")})
        volume.write(accounts + name + ".plist", account(home, number));
    EXPECT_THAT(findVolumeUser(volume.files(), std::nullopt)->otherHomes,
                ElementsAre(Path("/Volumes/db"), Path("/srv/homes/carl"), Path("/private/srv/homes/carl")));
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
    EXPECT_EQ(user().cacheFolder, std::nullopt) << "two pairs with the same owner";
    EXPECT_EQ(user().temporaryFolder, std::nullopt);

    if (::geteuid() != 0) GTEST_SKIP() << "only root can give a folder to another user";
    ASSERT_EQ(::chown(volume.host("/Users/alice").c_str(), 501, 20), 0);
    EXPECT_EQ(user().temporaryFolder, std::nullopt) << "pairs of another owner";
    ASSERT_EQ(::chown(volume.host("/private/var/folders/cd/second").c_str(), 501, 20), 0);
    EXPECT_EQ(user().userID, 501u);
    EXPECT_EQ(user().cacheFolder, std::nullopt);
    EXPECT_EQ(user().temporaryFolder, Path("/private/var/folders/cd/second/T"));
}

} // namespace
} // namespace tidwen
