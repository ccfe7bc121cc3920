#include "base/path.h"
#include "platform/user_environment.h"
#include "posix/item_description.h"
#include "scan/policy/path_policy.h"

#include "support/fixtures.h"

#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using Fault = PathPolicy::ViolationKind;
using namespace std::string_literals;
using Violation = PathPolicy::Violation;

std::optional<Fault> kindOf(const std::optional<Violation>& violation) {
    return violation ? std::optional(violation->kind) : std::nullopt;
}

/// Checks lists of paths; all paths of a list must get the same result.
template<class Judge>
void expectEach(const Judge& judge,
                const std::vector<std::pair<std::optional<Fault>, std::vector<std::string>>>& cases) {
    for (const auto& [expected, paths] : cases)
        for (const auto& path : paths)
            EXPECT_EQ(kindOf(judge(path)), expected) << path;
}

UserEnvironment userAt(const std::string& home) {
    auto user = test::alice();
    user.home = Path(home);
    return user;
}

/// In a home without links.
PathPolicy policyFor(const std::string& home) {
    const test::TemporaryVolume empty;
    return {userAt(home), empty.files()};
}

TEST(PathPolicy, JudgesPaths) {
    const std::string home = "/Users/alice";
    const auto policy = policyFor(home);
    expectEach(
        [&](const std::string& path) { return policy.check(Path(path)); },
        {{std::nullopt,
          {"/Applications/Foo.app", "/usr/local/bin/tool", "/users/SHARED/x",
           home + "/Library/Caches/com.example.app", home + "/Library/KeychainsOld/x",
           "/private/var/db/receipts/com.example.bom", "/private/var/folders/ab/xyz/C/com.example.app",
           "/var/folders/ab/xyz/C/x"}},
         {Fault::tooShallow,
          {"/", "/Applications", "/Library/Caches/x/../../..", "/private/var/folders/ab/xyz/C",
           "/var/folders/ab/xyz/C"}},
         {Fault::deniedExact,
          {"/Applications/Utilities/", "/usr/local/bin", "/opt/homebrew/CELLAR", home,
           home + "/library//CACHES/.", home + "/Library/Audio/Plug-Ins/VST3", "/private/var/db/receipts",
           "/private/var/folders/ab/xyz123/C"}},
         {Fault::neverTouch,
          {"/usr/localized/tool", home + "/Downloads/Setup.dmg", "/Users/bob/Library/Caches/x", "/USERS/al",
           "/Users/alice2/Applications/Foo.app", "/private/var/db/other",
           "/System/Volumes/Data/Users/alice/Library/Caches/x", "/Library/Caches/../../System/Library/x",
           // Some Mac disks treat these as "Documents": a long s, a joiner.
           home + "/Document\u017f/Letter.txt", home + "/Docu\u200dments/Letter.txt"}},
         {Fault::traversal,
          {"/.vol/16777220/1152921500312", std::string("/usr/local/bin\0x", 16), "Library/Caches/x", ""}}});
}

TEST(PathPolicy, OnlyInstallersMayLeaveDownloads) {
    const auto policy = policyFor("/Users/alice");
    EXPECT_FALSE(policy.check(Path("/Users/alice/downloads/Setup.DMG"), true));
    for (const char* refused : {"sub/Setup.dmg", "Letter.txt", ".dmg", "../Documents/Setup.dmg"})
        EXPECT_TRUE(policy.check(Path("/Users/alice/Downloads") / refused, true)) << refused;
}

TEST(PathPolicy, HomesOfEveryKind) {
    const auto composed = policyFor("/Users/Ren\u00e9e");
    EXPECT_EQ(kindOf(composed.check(Path("/Users/RENE\u0301E/Music/a.mp3"))), Fault::neverTouch);
    EXPECT_TRUE(composed.isQuarantineEndpoint(Path("/users/Rene\u0301e/.trash/Tidwen - x/item")));
    const auto none = policyFor("");
    EXPECT_EQ(kindOf(none.check(Path("/Library/Caches/com.example.app"))), Fault::traversal);
    EXPECT_FALSE(none.isQuarantineEndpoint(Path(".Trash/Tidwen - x/item")));
    EXPECT_EQ(kindOf(policyFor("/").check(Path("/Documents/x"))), Fault::neverTouch);
    for (const char* other : {"Tidwen - x", "Foo.app/Tidwen - x", "Tidwen/x", "Tidwen - x/../Foo.app/x"})
        EXPECT_FALSE(policyFor("/").isQuarantineEndpoint(Path("/.Trash") / other)) << other;
}

TEST(PathPolicy, HomesOfOthersWhereverTheyLie) {
    auto user = test::alice();
    user.home = Path("/home/alice");
    user.otherHomes = {Path("/srv/homes/carl"),
                       Path("/opt/people/dave"), // and what is not a home:
                       Path("/"),
                       Path("/Library"),
                       Path("/home"),
                       Path("/home/alice"),
                       Path("/usr/local"),
                       Path("relative")};
    const test::TemporaryVolume empty;
    const PathPolicy policy(user, empty.files());
    expectEach([&](const std::string& path) { return policy.check(Path(path)); },
               {{Fault::neverTouch,
                 {"/srv/homes/carl", "/srv/Homes/CARL/.ssh/authorized_keys", "/opt/people/dave/Library/x",
                  "/root/x", "/var/root/x", "/private/var/root/x", "/home/dave/x", "/Network/Servers/x"}},
                {std::nullopt,
                 {"/srv/homes/carla/x", "/opt/people/tool", "/home/alice/Library/Caches/x",
                  "/Library/Application Support/x", "/usr/local/bin/tool"}}});
}

/// A different spelling of a path that names the same item on a Mac.
std::string respelled(const std::string& path, std::mt19937& random) {
    static const char* const separators[] = {"/", "//", "/./", "/x/../", "///.//"};
    std::string spelled;
    for (const char c : path)
        if (c == '/')
            spelled += separators[random() % std::size(separators)];
        else
            spelled += static_cast<char>(random() % 2 ? std::toupper(c) : std::tolower(c));
    return spelled;
}

TEST(PathPolicy, NoSpellingOpensWhatIsNeverTouched) {
    std::istringstream prefixes(
        "/System:/bin:/sbin:/dev:/etc:/private/etc:/cores:/Volumes:/usr:/var:/private/var:"
        "/Library/Apple:/Library/Managed Preferences:/Library/SystemExtensions:"
        "/Library/Keychains:/Library/Security:/Users/alice/Library/Keychains:"
        "/Users/alice/Library/Mobile Documents:/Users/alice/Documents:"
        "/Users/alice/Desktop:/Users/alice/Downloads:/Users/alice/Pictures:"
        "/Users/alice/Movies:/Users/alice/Music:/Users/alice/.Trash");
    const auto policy = policyFor("/Users/alice");
    std::mt19937 random(20240101);
    for (std::string prefix; std::getline(prefixes, prefix, ':');)
        for (const char* tail : {"/item", "/a/b.app", "/local files/x", "/.hidden/x/"})
            for (int round = 0; round < 20; ++round) {
                const auto path = respelled(prefix + tail, random);
                ASSERT_EQ(kindOf(policy.check(Path(path), true)), Fault::neverTouch) << path;
            }
    for (const char* shallow :
         {"/", "/Applications", "/opt/..", "/Library/Caches/..", "/Users/alice/../../a"})
        for (int round = 0; round < 50; ++round)
            ASSERT_TRUE(policy.check(Path(respelled(shallow, random)), true)) << shallow;
}

class MovePolicy : public testing::Test {
  protected:
    MovePolicy() {
        for (const auto& folder : {caches, "/Users/alice/Documents"s, "/System/Library"s})
            volume.makeFolder(folder);
        volume.write("/Library/file", "x");
        volume.makeFolder(quarantine);
    }
    std::optional<Violation> check(const std::string& source, const std::string& destination) {
        const auto judged = PathPolicy(userAt(home), volume.files())
                                .checkMove(Path(source), Path(destination), volume.files());
        return judged ? std::nullopt : std::optional(judged.error());
    }

    test::TemporaryVolume volume;
    std::string home = "/Users/alice";
    const std::string quarantine = "/Users/alice/.Trash/Tidwen - 2024-01-01 10-00-00";
    const std::string caches = "/Users/alice/Library/Caches";
};

TEST_F(MovePolicy, JoinsARealPlaceAndTheQuarantine) {
    EXPECT_EQ(check("/Library/Foo", quarantine + "/Foo"), std::nullopt);
    EXPECT_EQ(check("/Users/alice/Downloads/Setup.pkg", quarantine + "/new/Setup.pkg"), std::nullopt);
    EXPECT_EQ(check(quarantine + "/Foo", "/Library/Gone/deeper/Foo"), std::nullopt);
    const auto noEnd = Fault::missingQuarantineEndpoint;
    EXPECT_EQ(check("/Library/Foo", "/Library/Bar"), (Violation{noEnd, "/Library/Bar"}));
    EXPECT_EQ(check(quarantine + "/a", quarantine + "/b"), (Violation{noEnd, quarantine + "/a"}));
    EXPECT_EQ(check("/a/../b", quarantine + "/../x"), (Violation{Fault::traversal, "/a/../b"}));
    EXPECT_EQ(check("/System/x", quarantine + "/../x"), (Violation{Fault::traversal, quarantine + "/../x"}));
}

TEST_F(MovePolicy, FollowsTheLinksOfTheRealPlace) {
    volume.link(caches + "/system", "/System/Library");
    volume.link(caches + "/documents", "../../Documents");
    volume.link(caches + "/nowhere", "/Library/Missing");
    volume.link(caches + "/loop", "loop");
    volume.link(caches + "/fine", "/Library");
    volume.makeFolder("/Users/bob/Library/Caches");
    volume.link(caches + "/bob", "/Users/bob/Library/Caches");
    for (const bool isPutBack : {false, true})
        expectEach(
            [&](const std::string& path) {
                return isPutBack ? check(quarantine + "/item", path) : check(path, quarantine + "/item");
            },
            {{Fault::neverTouch,
              {caches + "/system/new/x", caches + "/documents/taxes", caches + "/bob/com.example.app"}},
             {Fault::traversal, {caches + "/nowhere/deeper/x", caches + "/loop/x", "/Library/file/deeper/x"}},
             {Fault::deniedExact, {caches + "/fine/Caches"}},
             {std::nullopt, {caches + "/fine/x", caches + "/documents"}}}); // the latter is the link itself
}

TEST_F(MovePolicy, DoubtsWhatOtherHomesMayLeadToWhenTheyAreTooMany) {
    const auto mayBeOthers = [&](const std::string& place) {
        return PathPolicy(userAt(home), volume.files()).mayBeInAnotherHome(Path(place));
    };
    volume.makeFolder("/Users/bob/Library");
    volume.write(caches + "/last", "x");
    for (int i = 0; i < 2'000; ++i)
        volume.link("/Users/bob/Library/" + std::to_string(i), i == 1'999 ? caches + "/last" : "/nowhere");
    EXPECT_FALSE(mayBeOthers(caches + "/x"));
    EXPECT_EQ(kindOf(check(caches + "/last", quarantine + "/x")), Fault::neverTouch);
    volume.link("/Users/bob/more", caches + "/more");
    EXPECT_TRUE(mayBeOthers(caches + "/x"));
    EXPECT_FALSE(mayBeOthers("/Library/x")) << "such a link protects only items of homes";

    for (int i = 1; i < 500; ++i) // with bob
        volume.makeFolder("/Users/m" + std::to_string(i));
    EXPECT_FALSE(mayBeOthers("/Library/x"));
    volume.makeFolder("/Users/m500");
    EXPECT_TRUE(mayBeOthers("/Library/x"));
}

TEST_F(MovePolicy, FollowsTheLinksOfTheQuarantine) {
    volume.link("/Users/alice/.Trash/Tidwen - out", "/Users/alice/Documents");
    volume.link("/Users/alice/.Trash/Tidwen - other", quarantine);
    volume.link(quarantine + "/out", "/Library");
    const auto into = [&](const std::string& place) { return kindOf(check("/Library/Foo", place)); };
    EXPECT_EQ(into("/Users/alice/.Trash/Tidwen - out/x"), Fault::missingQuarantineEndpoint);
    EXPECT_EQ(into(quarantine + "/out/x"), Fault::missingQuarantineEndpoint);
    EXPECT_EQ(into("/Users/alice/.Trash/Tidwen - other/sub/x"), std::nullopt);
}

TEST_F(MovePolicy, AFolderBesideTheHomeIsNotTheHome) {
    const auto putBack = [&](const std::string& path) { return kindOf(check(quarantine + "/x", path)); };
    EXPECT_EQ(putBack("/Users/alicE/new/x"), Fault::neverTouch) << "would be created beside the home";
    volume.makeFolder("/Users/ALICE/Library");
    EXPECT_EQ(putBack("/Users/ALICE/Library/x"), Fault::neverTouch);
    EXPECT_EQ(putBack("/Users/alice/./Library/x"), std::nullopt);
    volume.link("/Users/Alice", "alice"); // as on a case-insensitive disk
    EXPECT_EQ(putBack("/Users/Alice/Library/x"), std::nullopt);
}

TEST_F(MovePolicy, AHomeBehindALinkIsProtectedUnderBothNames) {
    volume.link("/Users/link", "/Users/alice");
    volume.link(caches + "/evil", "/Users/alice/Documents");
    home = "/Users/link";
    expectEach(
        [&](const std::string& path) {
            return check(path, "/Users/link/.Trash/Tidwen - 2024-01-01 10-00-00/item");
        },
        {{std::nullopt, {"/Users/link/Library/Caches/com.example.app", "/Users/link/Downloads/Setup.dmg"}},
         {std::nullopt, {"/Users/alice/Library/Caches/com.example.app", "/Users/alice/Downloads/Setup.dmg"}},
         {Fault::neverTouch,
          {"/Users/link/Library/Caches/evil/taxes", "/Users/alice/Documents/taxes", "/Users/bob/x"}},
         {Fault::deniedExact, {"/Users/alice/Library/Caches"}}});
}

TEST_F(MovePolicy, ProtectsPlacesWhereTheyReallyLie) {
    const std::string support = "/Users/alice/Library/Application Support";
    const struct {
        std::string link, place;
        std::vector<std::string> refused, allowed = {};
    } cases[] = {
        {"/Users/alice/Documents",
         support + "/Lumen/Docs",
         {support + "/Lumen", support + "/Lumen/Docs", support + "/LUMEN/docs/letter"},
         {support + "/Lumen/other", support + "/Lumen2"}},
        {"/Users/alice/Library/Keychains", support + "/Lumen/Kc", {support + "/Lumen"}},
        {"/Users/bob", support + "/Lumen/bob", {support + "/Lumen", support + "/Lumen/bob/Library/x"}},
        {"/Users/bob", "/opt/bobhome", {"/opt/bobhome/.ssh/keys", "/Users/bob/x"}, {"/opt/bobhome2/x"}},
        {"/Users/carl", "/Users/Shared/carl", {"/Users/Shared/carl"}, {"/Users/Shared/x"}},
        {"/Users/alice/Library/Preferences",
         support + "/Lumen/P",
         {support + "/Lumen"},
         {support + "/Lumen/P/x"}},
        {"/Users/alice/Library/Caches",
         "/Applications/Lumen.app/L/C",
         {"/Applications/Lumen.app", "/Applications/Lumen.app/L"},
         {"/Applications/Lumen.app/L/C/x"}},
        {"/Users/alice/Applications",
         support + "/Lumen/Apps",
         {support + "/Lumen"},
         {support + "/Lumen/Apps/x"}},
        {"/usr/local/bin", "/opt/tools/bin", {"/opt/tools", "/opt/tools/bin"}, {"/opt/tools/bin/x"}},
        {"/Library",
         "/private/lib",
         {"/private/lib", "/private/lib/Caches", "/private/lib/Keychains/x"},
         {"/private/lib/Caches/x"}},
        {"/Users/alice/Downloads",
         "/Users/alice/dl",
         {"/Users/alice/dl/Letter"},
         {"/Users/alice/dl/Setup.dmg"}},
        {"/Users/alice/Downloads", "/Users/alice/Documents/dl", {"/Users/alice/Documents/dl/Setup.dmg"}},
        {"/Users/alice/Downloads", "/Users/alice/Documents", {"/Users/alice/Documents/Setup.dmg"}},
        {"/Users/bob/Library", support + "/Lumen/b", {support + "/Lumen", support + "/Lumen/b/x"}},
        {"/Users/bob/Library/Mail", support + "/Lumen/b", {support + "/Lumen", support + "/Lumen/b/x"}},
        {"/Users/bob/.ssh", support + "/Lumen/b", {support + "/Lumen"}},
        {"/private/var/root/Library", support + "/Lumen/b", {support + "/Lumen"}},
        {"/Users/bob/lumen", "/Applications/Lumen.app", {}, {"/Applications/Lumen.app"}},
        {"/Users/bob/Documents", "/Users/Shared/Bob", {"/Users/Shared/Bob/x"}, {"/Users/Shared/x"}},
        {"/Users/bob/Library/Preferences", "/Library/Bob", {"/Library/Bob/x"}, {"/Library/x/y"}},
        {"/Users/bob/Applications", home + "/Applications", {}, {home + "/Applications/x"}},
        {"/Users/bob", home, {home}, {home + "/Applications/x"}},
        // Protecting these would leave nothing removable: a link to the home, or above it, and shared places.
        {"/Users/alice/Music", "/Users/alice", {"/Users/alice"}, {support + "/Lumen", "/Applications/x"}},
        {"/Users/bob", "/Users", {"/Users/bob/x"}, {support + "/Lumen", "/Users/Shared/x"}},
        {"/Users/bob", "/Users/Shared", {"/Users/Shared"}, {"/Users/Shared/x"}},
        // As on every Mac.
        {"/var",
         "/private/var",
         {"/private/var/db/x"},
         {"/private/var/folders/ab/xyz/C/x", "/private/tmp/x"}},
    };
    for (const auto& c : cases) {
        const test::TemporaryVolume disk;
        disk.makeFolder(quarantine);
        disk.makeFolder(c.place);
        disk.link(c.link, c.place);
        const PathPolicy policy(userAt(home), disk.files());
        const auto isRefused = [&](const std::string& path, bool isPutBack) {
            const Path real(path), kept(quarantine + "/x");
            return !policy.checkMove(isPutBack ? kept : real, isPutBack ? real : kept, disk.files());
        };
        for (const bool isPutBack : {false, true}) {
            for (const auto& path : c.refused)
                EXPECT_TRUE(isRefused(path, isPutBack)) << c.link << ": " << path;
            for (const auto& path : c.allowed)
                EXPECT_FALSE(isRefused(path, isPutBack)) << c.link << ": " << path;
        }
    }
}

TEST(PathPolicy, WhatHoldsAProtectedPlaceStays) {
    const auto policy = policyFor("/srv/homes/alice");
    for (const char* holder : {"/srv/homes", "/Library/Audio/Plug-Ins", "/private/var/folders/ab/xyz123"})
        EXPECT_TRUE(policy.check(Path(holder))) << holder;
}

} // namespace
} // namespace tidwen
