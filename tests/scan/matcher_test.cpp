#include "base/path.h"
#include "scan/applications/app_target.h"
#include "scan/applications/owning_bundle.h"
#include "scan/matching/other_applications.h"
#include "scan/matching/residue_matcher.h"
#include "scan/matching/trace.h"
#include "scan/owner.h"

#include "support/fixtures.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using test::owner;
using Kind = MatchReason::Kind;

AppTarget targetNamed(std::string bundleID, std::string name) {
    return {.bundleURL = Path("/Applications/Target.app"),
            .bundleID = std::move(bundleID),
            .name = std::move(name)};
}

ResidueMatcher matcherFor(AppTarget target, const std::vector<OwningBundle>& installed = {},
                          const std::vector<std::string>& helpers = {},
                          const std::vector<BundleContents>& contents = {}) {
    OtherApplications others(installed, target.bundleID, [contents] { return contents; });
    return ResidueMatcher(std::move(target), std::move(others), helpers);
}

std::string shown(const std::optional<MatchReason>& reason) {
    return reason ? std::string(name(reason->kind)) + " " + reason->value : "none";
}

const std::vector<OwningBundle> neighbours = {
    owner("/Applications/Other.app", "com.other.app", "Marlin Reader"),
    owner("/Applications/Beta.app", "com.Example.App.Beta", "Marlin Notes 2"),
    owner("/Applications/Marlin.app", "com.corvella.marlin", "Marlin Notes Helper"),
};

TEST(ResidueMatcher, JudgesByIdentifierThenName) {
    const auto matcher =
        matcherFor(targetNamed("com.Example.app", "Marlin Notes"), neighbours,
                   {"com.corvella.share.Login", "com.corvella.marlin", "helper", "corvella.two"});
    const std::pair<const char*, const char*> cases[] = {
        {"com.example.app", "exactBundleID com.Example.app"},
        {"COM.EXAMPLE.APP.PLIST", "exactBundleID com.Example.app"},
        {"com.example.app.savedState", "exactBundleID com.Example.app"},
        {"com.example.app.sfl4", "exactBundleID com.Example.app"},
        {"com.example.app.helper", "exactBundleID com.Example.app"},
        {"group.com.example.app.shared", "exactBundleID com.Example.app"},
        {"ABCDE12345.com.example.app", "exactBundleID com.Example.app"},
        {"com.example.application", "none"},
        {"xcom.example.app", "none"},
        {"com.corvella.share.login.plist", "exactBundleID com.corvella.share.Login"},
        {"ABCDE12345.com.corvella.share.login.x", "exactBundleID com.corvella.share.Login"},
        {"corvella.two", "exactBundleID corvella.two"},
        {"corvella.two.more", "none"},   // two components match only as a whole
        {"helper", "none"},              // a single word identifies no one
        {"com.corvella.marlin", "none"}, // a helper that is another installed application
        {"com.example.app.beta.plist", "exactBundleID com.Example.app"},
        {"com.other.application", "none"}, // begins with com.other.app, whatever follows
        {"marlin notes.com.other.app", "none"},
        {"com.apple.com.example.app", "none"},
        {"Com.Apple.Marlin", "none"},
        {"com.corvella.tidwen.com.example.app", "none"},
        {"Marlin Notes", "nameToken Marlin Notes"},
        {"MARLIN-notes", "nameToken Marlin Notes"},
        {"marlinnotes.plist", "nameToken Marlin Notes"},
        {"Marlin Notes-Helper", "nameToken Marlin Notes"},
        {"Marlin Notes.", "nameToken Marlin Notes"},
        {"Marlin Notes.cache", "nameToken Marlin Notes"},
        {"Marlin Notes Crash-Reporter", "nameToken Marlin Notes"},
        {"Marlin NotesStore", "none"},
        {"Marlin Notes-Extras", "none"},
        {"\xff\xfe", "none"},
        {"", "none"},
    };
    for (const auto& [candidate, expected] : cases)
        EXPECT_EQ(shown(matcher.matchIdentifier(candidate)), expected) << candidate;
}

TEST(ResidueMatcher, TakesNothingThatIsApplesOrEverybodys) {
    const struct {
        const char *bundleID, *name, *candidate;
        bool matches;
    } cases[] = {
        {"group.com.apple.notes", "", "group.com.apple.notes", false},
        {"groups.com.apple.podcasts", "", "243LU875E5.groups.com.apple.podcasts", false},
        {"com.example.app", "com apple", "com.apple", false},
        {"com.example.app", "MobileSync", "MobileSync", false}, // device backups
        {"com.example.app", "Cloud-Docs", "CloudDocs", false},
        {"com.example.app", "GlobalPreferences", ".GlobalPreferences.plist", false},
        {"com.corvella.app", "Reader", "TEAMTEAM12.com.corvella.tidwen.shared", false},
        {"com.example.app", "Electron", "Electron", false}, // a default executable name
        {"Caches", "", "Caches", false},
        {"Terminal", "", "Terminal", false},
        {"Marlin", "", "Marlin", false}, // neither identifier nor name
        {"com", "", "com.example.app", false},
        {"..", "", "..", false},
        {".GlobalPreferences", "", ".GlobalPreferences.plist", false},
        {"Arial.ttf", "", "Arial.ttf", false},
        {"x.app", "", "x.app", false},
        {"Massive.component", "", "Massive.component", false},
        {"Acme.Massive.component", "Acme.Massive.component", "Acme.Massive.component", false},
        {"Acme.Sans.pfb", "", "Acme.Sans.PFB", false},
        {"Acme.Type.inputplugin", "", "Acme.Type.inputplugin", false},
        {"com.example.app", "", "com.example.app", true},
        {"com..app", "", "com..app", false},
        {"com.example app", "", "com.example app", false},
        {"com.example.app", "com.other.job", "com.other.job", false},
        {"x-1.y_2", "", "X-1.Y_2.plist", true},
    };
    for (const auto& c : cases) {
        auto target = targetNamed(c.bundleID, c.name);
        target.executableName = c.name;
        EXPECT_EQ(matcherFor(target).attributeGroup(c.candidate).has_value(), c.matches) << c.candidate;
    }
    const auto matcher = matcherFor(targetNamed("com.example.app", "Marlin Notes"), {},
                                    {"com.apple.mail", "group.com.apple.notes", "com.apple.notes",
                                     "org.sparkle-project.Sparkle.Autoupdate", "com.example.sparkle"});
    for (const auto* candidate : {"com.apple.mail", "group.com.apple.notes", "x.com.apple.notes",
                                  "org.sparkle-project.Sparkle.Autoupdate"})
        EXPECT_FALSE(matcher.attributeGroup(candidate)) << candidate;
    EXPECT_TRUE(matcher.matchIdentifier("com.example.sparkle"));
}

TEST(ResidueMatcher, TakesAShortIdentifierOnlyAsAWhole) {
    const auto matcher = matcherFor(targetNamed("com.example", ""));
    EXPECT_TRUE(matcher.matchIdentifier("com.example.plist"));
    for (const auto* candidate : {"com.example.app", "x.com.example", "a.com.example.b"})
        EXPECT_FALSE(matcher.matchIdentifier(candidate)) << candidate;
}

TEST(ResidueMatcher, MatchesNoCommonOrShortNames) {
    for (const auto* common :
         {"Notes", "D-O-C-K", "App", "Tool", "Zed", "", "\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e\xe5\xb8\xb3"}) {
        auto target = targetNamed("com.example.app", common);
        target.executableName = common;
        const auto matcher = matcherFor(target);
        EXPECT_TRUE(matcher.nameMatchingDisabled()) << common;
        EXPECT_FALSE(matcher.matchIdentifier(common)) << common;
        EXPECT_FALSE(matcher.matchExecutable(common)) << common;
    }
    for (const auto& [identifier, isUsed] :
         {std::pair("com.example.app", true), std::pair("com.exam.service", false), std::pair("none", false),
          std::pair("com.corvella.tidwen.other", false)}) {
        const auto matcher = matcherFor(targetNamed(identifier, "Marlin Notes"));
        EXPECT_EQ(!matcher.identifierMatchingDisabled(), isUsed) << identifier;
        EXPECT_EQ(matcher.matchIdentifier(identifier).has_value(), isUsed) << identifier;
    }
}

TEST(ResidueMatcher, NamesTheHelpersByWhichItLooksForNothing) {
    const ResidueMatcher matcher(targetNamed("com.example.app", "Marlin Notes"), {},
                                 {"com.Example.plugin", "com.example.helper"});
    EXPECT_EQ(matcher.unusableHelpers(), std::vector<std::string>{"com.Example.plugin"});
}

TEST(ResidueMatcher, ComparesNamesAsPeopleSeeThem) {
    // Composed in the bundle, decomposed on the disk, and vice versa.
    const std::string composedName = "Caf\xC3\xA9 \xC3\x9C"
                                     "ber",
                      decomposedName = "Cafe\xCC\x81 U\xCC\x88"
                                       "ber";
    for (const auto& [own, found] :
         {std::pair(composedName, decomposedName), std::pair(decomposedName, composedName)}) {
        const auto matcher = matcherFor(targetNamed("com.example.app", own));
        EXPECT_TRUE(matcher.matchIdentifier(found));
        EXPECT_TRUE(matcher.matchIdentifier(found + "-Helper"));
        EXPECT_FALSE(matcher.matchIdentifier("Cafe Uber"));
    }
    EXPECT_TRUE(
        matcherFor(targetNamed("com.example.app", "\xd0\x97\xd0\xb0\xd0\xbc\xd0\xb5\xd1\x82\xd0\xba\xd0\xb8"))
            .matchIdentifier("\xd0\xb7\xd0\x90\xd0\xbc\xd0\xb5\xd1\x82\xd0\xba\xd0\xb8.2"));
}

TEST(ResidueMatcher, MatchesTheExecutableAsAWhole) {
    auto target = targetNamed("com.example.app", "Notes");
    target.executableName = "MarlinEngine";
    const auto matcher = matcherFor(target);
    EXPECT_EQ(shown(matcher.matchExecutable("Marlin-Engine.plist")), "executableName MarlinEngine");
    EXPECT_FALSE(matcher.matchExecutable("MarlinEngine-Helper"));
    EXPECT_EQ(shown(matcher.attribute("marlin engine")->reason), "executableName MarlinEngine");
}

TEST(ResidueMatcher, MatchesDeclaredGroups) {
    auto target = targetNamed("com.example.app", "Marlin Notes");
    target.appGroups = {"ABCDE12345.com.corvella.Shared",
                        "group.corvella",
                        "com.apple.notes",
                        "GROUP.com.apple.x",
                        "FGHIJ67890.suite",
                        "ABCDE12345.group.com.apple.y",
                        "groups.com.apple.podcasts"};
    const auto matcher = matcherFor(
        target, {owner("/Applications/Chart.app", "com.corvella.Chart", "Chart")}, {},
        {BundleContents{{}, {}, {"ABCDE12345.group.corvella", "ABCDE12345.com.example.app"}, true}});
    const std::pair<const char*, const char*> cases[] = {
        {"abcde12345.COM.corvella.shared", "appGroup ABCDE12345.com.corvella.Shared"},
        {"com.corvella.shared", "appGroup ABCDE12345.com.corvella.Shared"},
        {"ZZZZZ99999.com.corvella.shared", "none"}, // another vendor's
        {"group.corvella", "sharedAppGroup group.corvella"},
        {"com.apple.notes", "none"},
        {"group.com.apple.x", "none"},
        {"group.com.apple.y", "none"},
        {"243LU875E5.groups.com.apple.podcasts", "none"},
        {"suite", "appGroup FGHIJ67890.suite"},
        {"corvella", "none"},
    };
    for (const auto& [candidate, expected] : cases)
        EXPECT_EQ(shown(matcher.matchAppGroup(candidate)), expected) << candidate;
    EXPECT_EQ(matcher.attributeGroup("group.corvella")->contestedBy->bundleID, "com.corvella.Chart");
    EXPECT_FALSE(matcher.attributeGroup("com.corvella.shared")->contestedBy);
    // Found by its identifier alone, yet also the other one's group.
    EXPECT_EQ(matcher.attributeGroup("ABCDE12345.com.example.app")->contestedBy->bundleID,
              "com.corvella.Chart");
    EXPECT_FALSE(matcher.attributeGroup("com.corvella.tidwen.group"));

    // Declaring a group is as easy as writing another's identifier or name.
    target.appGroups = {"com.other.app", "ABCDE12345.com.other.app.shared", "Othello", "com.helper.agent"};
    const auto hostile = matcherFor(target, {owner("/Applications/Othello.app", "com.other.app", "Othello")},
                                    {}, {BundleContents{{"com.helper.agent"}, {}, {}, true}});
    for (const auto& group : target.appGroups)
        EXPECT_EQ(hostile.attributeGroup(group)->contestedBy.value_or(Claimant{}).name, "Othello") << group;
}

TEST(ResidueMatcher, TellsWhoElseClaimsAName) {
    auto installed = neighbours;
    auto target = targetNamed("com.example.app", "Marlin Notes");
    const auto claimant = [&](const char* candidate) {
        const auto found = matcherFor(target, installed).attribute(candidate);
        return found ? found->contestedBy.value_or(Claimant{"nobody", "", Path()}).bundleID : "no match";
    };
    EXPECT_EQ(claimant("com.example.app.plist"), "nobody");
    EXPECT_EQ(claimant("com.example.app.betax"), "nobody");
    EXPECT_EQ(claimant("com.example.app.beta.plist"), "com.Example.App.Beta");
    EXPECT_EQ(claimant("group.com.example.app.beta.x"), "com.Example.App.Beta");
    EXPECT_EQ(claimant("Marlin Notes"), "nobody");
    EXPECT_EQ(claimant("Marlin Notes-2"), "com.Example.App.Beta");
    EXPECT_EQ(claimant("Marlin Notes.Helper"), "com.corvella.marlin");

    // An application of the same name has an equal claim to the name, not to the identifier.
    installed.push_back(owner("/Applications/Namesake.app", "com.namesake.app", "marlin-notes"));
    EXPECT_EQ(claimant("Marlin Notes"), "com.namesake.app");
    EXPECT_EQ(claimant("Marlin Notes Cache"), "com.namesake.app");
    EXPECT_EQ(claimant("marlin notes-7"), "com.namesake.app");
    EXPECT_EQ(claimant("com.example.app"), "nobody");

    // A helper in the bundle whose identifier continues another application's.
    const auto withHelper = matcherFor(target, installed, {"com.other.app.sync", "com.corvella.sync"});
    EXPECT_EQ(withHelper.attribute("com.other.app.sync.plist")->contestedBy->bundleID, "com.other.app");
    EXPECT_FALSE(withHelper.attribute("com.corvella.sync.plist")->contestedBy);

    // A helper that another application embeds too belongs to neither alone.
    const auto sharing =
        matcherFor(target, {owner("/Applications/Other.app", "com.other.app", "com-vend-tool")},
                   {"com.vend.updater", "com.vend.own", "com.vend.tool"},
                   {BundleContents{{"com.vend.Updater"}, {}, {}, true}});
    EXPECT_EQ(sharing.attribute("com.vend.updater.plist")->contestedBy,
              (Claimant{"com.other.app", "com-vend-tool", Path("/Applications/Other.app")}));
    EXPECT_FALSE(sharing.attribute("com.vend.own.plist")->contestedBy);
    EXPECT_TRUE(sharing.attribute("com.vend.tool")->contestedBy); // the other one has this name

    // A folder with the vendor's name may contain data of its other applications.
    target.name = "Corvella";
    EXPECT_EQ(claimant("Corvella"), "com.corvella.marlin");
    EXPECT_EQ(claimant("Corvella Cache"), "nobody");
    target.name = "Marlin Notes";

    // What looks like the wrapping of the target's identifier may end another's.
    EXPECT_EQ(claimant("com.example.app.log"), "nobody");
    installed.push_back(owner("/Applications/Log.app", "com.Example.app.log", "Log"));
    for (const char* name : {"com.example.app.log", "com.example.app.log.plist"})
        EXPECT_EQ(claimant(name), "com.Example.app.log") << name;

    // A copy of the application shares everything and contests nothing.
    installed.push_back(owner("/Users/alice/Applications/Target.app", "com.Example.App", "Marlin Notes"));
    EXPECT_EQ(claimant("com.example.app.plist"), "com.Example.App");
    EXPECT_EQ(claimant("Marlin Notes"), "com.Example.App");
}

TEST(ResidueMatcher, AnIdentifierOfOthersYieldsOnlyToOneThatSaysMore) {
    OwningBundle nameless = owner("/Applications/Marzipan.app", "", "Marzipan");
    nameless.names.push_back("Adobo.Photoshow");
    const std::vector<OwningBundle> installed = {
        owner("/Applications/Lumen.app", "com.lumenlight.lumen", "Lumen"),
        owner("/Applications/Marlin.app", "com.marlinworks.notes", "Marlin"), nameless,
        owner("/Applications/Word.app", "app", "Word")};
    const std::vector<BundleContents> contents = {
        {},
        {{"com.marlinworks.capture"}, {}, {"group.com.tee.main.shared", "ABCDE12345.com.tee.main"}, true},
        {},
        {}};
    const struct {
        const char *bundleID, *candidate, *claimant;
    } cases[] = {
        {"ABCDE12345.com.lumenlight", "ABCDE12345.com.lumenlight.lumen", "Lumen"},
        {"group.com.lumenlight", "group.com.lumenlight.lumen.plist", "Lumen"},
        {"some.longprefix.com.lumenlight", "some.longprefix.com.lumenlight.lumen", "Lumen"},
        {"group.com.lumenlight.lumen", "group.com.lumenlight.lumen", "Lumen"}, // only a prefix more
        {"lumen.shared.data", "com.lumenlight.lumen.shared.data", "Lumen"},
        {"com.lumenlight.lumen.pro", "group.com.lumenlight.lumen.pro.x", ""},
        {"com.example.app", "com.example.app.plist", ""}, // the word "app" in it is not an identifier
        {"com.marlinworks.capture", "com.marlinworks.capture.plist", "Marlin"}, // an embedded helper
        {"ABCDE12345.com.marlinworks", "ABCDE12345.com.marlinworks.capture", "Marlin"},
        {"com.marlinworks.capture.pro", "com.marlinworks.capture.pro", ""},
        {"com.tee.main", "group.com.tee.main.shared.plist", "Marlin"}, // a declared group
        {"com.tee.main", "ABCDE12345.com.tee.main", "Marlin"},
        {"group.com.tee.main.shared", "group.com.tee.main.shared", "Marlin"},
        {"com.tee.main", "group.com.tee.main.shared.8E2C.plist", "Marlin"}, // and what continues it
        {"com.tee.main", "com.tee.main.plist", ""},
        {"com.tee.main", "com.tee.main.cache", ""},
        {"Adobo.Photoshow", "Adobo.Photoshow", "Marzipan"},
    };
    for (const auto& c : cases) {
        const auto matcher = matcherFor(targetNamed(c.bundleID, "Marzipan"), installed, {}, contents);
        const auto found = matcher.attribute(c.candidate);
        ASSERT_TRUE(found) << c.candidate;
        EXPECT_EQ(found->contestedBy.value_or(Claimant{}).name, c.claimant)
            << c.bundleID << " " << c.candidate;
        EXPECT_EQ(matcher.attribute("Marzipan.plist")->contestedBy.value_or(Claimant{}).name, "Marzipan");
    }
}

TEST(OtherApplications, AnswersLikeALoopOverAllOfThem) {
    const std::vector<std::string> identifiers = {
        "com.example.app",     "com.example.app.beta", "com.example",     "zed",
        "com.examples.reader", "org.corvella.a",       "org.corvella.ab", "Z.Y"};
    std::vector<OwningBundle> installed;
    for (const auto& identifier : identifiers)
        installed.push_back(owner("/Applications/" + identifier, identifier, ""));
    installed.push_back(owner("/Applications/Empty.app", "", ""));
    const OtherApplications others(installed, "com.t.t");

    std::vector<std::string> candidates = {"",     ".",     "..",   "com",   "com.",  "zed",
                                           "zedd", "a.zed", "azed", "z.y.x", "q..zed"};
    for (const auto& identifier :
         {"com.example.app", "com.example.app.beta", "com.examples.reader", "org.corvella.ab"})
        for (const auto* before : {"", "x", "x.", "."})
            for (const auto* after : {"", ".", ".x", "x"})
                for (std::size_t length = 1; length <= std::string_view(identifier).size(); ++length)
                    candidates.push_back(before + std::string(identifier, length) + after);

    const auto lower = [](std::string text) { return text == "Z.Y" ? "z.y" : text; };
    for (const auto& candidate : candidates) {
        bool claimed = false;
        std::string longest;
        for (const auto& declared : identifiers) {
            const auto id = lower(declared);
            claimed = claimed || candidate.starts_with(id) || candidate.find("." + id) != candidate.npos;
            const auto dotted = "." + candidate + ".";
            if (dotted.find("." + id + ".") != dotted.npos && id.size() > longest.size()) longest = declared;
        }
        EXPECT_EQ(others.claims(candidate), claimed) << candidate;
        EXPECT_EQ(others.longestContinued(candidate).value_or(Claimant{}).bundleID, longest) << candidate;
    }
}

} // namespace
} // namespace tidwen
