#include "base/property_list.h"
#include "base/texts.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"
#include "support/matchers.h"
#include "support/memory_defaults.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

TEST(AppPreferences, TakesDefaultsForWhatIsAbsentOrOfAnotherType) {
    test::MemoryDefaults defaults;
    defaults.values = {{"tidwen.appearance", PropertyListValue(7)},
                       {"tidwen.catchTrashedApps", PropertyListValue("yes please")},
                       {"tidwen.homeSort", PropertyListValue("fromTheFuture")}};
    const AppPreferences preferences(defaults);
    EXPECT_EQ(preferences.language.get(), "system");
    EXPECT_EQ(preferences.appearance.get(), "auto");
    EXPECT_EQ(preferences.unusedThreshold.get(), "sixMonths");
    EXPECT_EQ(preferences.quarantineRetention.get(), "never");
    EXPECT_FALSE(preferences.catchTrashedApps.get());
    // A value of a newer version is preserved, and counts as the default here.
    EXPECT_EQ(preferences.homeSort.get(), "fromTheFuture");
    EXPECT_EQ(homeSort(preferences.homeSort.get()), HomeSort::automatic);
}

TEST(AppPreferences, ReadsASwitchAsItMayHaveBeenTyped) {
    const std::pair<PropertyListValue, bool> cases[] = {{true, true},
                                                        {1, true},
                                                        {0, false},
                                                        {1.0, true},
                                                        {"YES", true},
                                                        {"1", true},
                                                        {"true", true},
                                                        {"NO", false},
                                                        {"0", false},
                                                        {"", false},
                                                        {PropertyListArray{"YES"}, false}};
    for (const auto& [stored, expected] : cases) {
        test::MemoryDefaults defaults;
        defaults.values = {{"tidwen.catchTrashedApps", stored}};
        EXPECT_EQ(AppPreferences(defaults).catchTrashedApps.get(), expected);
    }
}

TEST(AppPreferences, SpeaksOnlyLanguagesThatItHas) {
    test::MemoryDefaults defaults;
    AppPreferences preferences(defaults, {"en", "pt-BR"});
    EXPECT_FALSE(preferences.set("language", "klingon"));
    EXPECT_FALSE(preferences.set("language", ""));
    EXPECT_TRUE(preferences.set("language", "pt-BR"));
    EXPECT_TRUE(preferences.set("language", "system"));
}

TEST(AppPreferences, WritesOnlyWhatChangesAndRefusesWhatIsNoValue) {
    test::MemoryDefaults defaults;
    AppPreferences preferences(defaults);
    int published = 0;
    const auto watching = preferences.quarantineRetention.observe([&](const std::string&) { ++published; });
    EXPECT_TRUE(preferences.set("quarantineRetention", "never"));
    EXPECT_EQ(defaults.writes, 0);
    EXPECT_TRUE(preferences.set("quarantineRetention", "sevenDays"));
    EXPECT_FALSE(preferences.set("quarantineRetention", "tomorrow"));
    EXPECT_FALSE(preferences.set("noSuchSetting", "1"));
    EXPECT_EQ(defaults.writes, 1);
    EXPECT_EQ(published, 1);

    defaults.values["tidwen.quarantineRetention"] = PropertyListValue("ninetyDays"); // another process
    preferences.reload();
    EXPECT_EQ(published, 2);
    EXPECT_EQ(defaults.writes, 1) << "what was just read need not be written";
    EXPECT_EQ(days(quarantineRetention(preferences.quarantineRetention.get())), 90);
}

TEST(AppTags, JoinsWhatPeopleCallTheSame) {
    test::MemoryDefaults defaults;
    const Texts texts;
    AppTags tags(defaults, texts);
    EXPECT_TRUE(tags.add("com.example.a", " Work "));
    EXPECT_TRUE(tags.add("com.example.b", "work"));
    using enum AppTags::Refusal;
    EXPECT_EQ(tags.add("com.example.b", "WORK").error(), thereAlready);
    EXPECT_EQ(tags.add("com.example.b", "  ").error(), unusableName);
    EXPECT_EQ(tags.rename("nope", "x").error(), notThere);
    EXPECT_EQ(tags.rename("work", "Work").error(), thereAlready);
    EXPECT_EQ(tags.erase("nope").error(), notThere);
    EXPECT_TRUE(tags.add("COM.example.B", "Games"));
    EXPECT_THAT(tags.all(), ElementsAre("Games", "Work"));
    EXPECT_TRUE(tags.rename("games", "Work")); // merges the two
    EXPECT_THAT(tags.tags("com.example.b"), ElementsAre("Work"));
    EXPECT_TRUE(tags.rename("Work", "work"));
    EXPECT_THAT(AppTags(defaults, Texts()).all(), ElementsAre("work"));
    EXPECT_TRUE(tags.erase("WORK"));
    EXPECT_TRUE(defaults.values.empty());

    AppTags other(defaults, texts); // of another process, which read before this one changed anything
    std::vector<std::set<std::string>> changes;
    const auto watching = tags.changed.connect([&](const auto& bundleIDs) { changes.push_back(bundleIDs); });
    EXPECT_TRUE(tags.add("com.example.a", "first"));
    EXPECT_TRUE(other.add("com.example.b", "second"));
    tags.reload();
    EXPECT_THAT(changes,
                ElementsAre(std::set<std::string>{"com.example.a"}, std::set<std::string>{"com.example.b"}));
    EXPECT_THAT(AppTags(defaults, Texts()).all(), ElementsAre("first", "second"));
    EXPECT_TRUE(tags.erase("first") && tags.erase("second"));

    defaults.isReadOnly = true;
    EXPECT_FALSE(tags.add("com.example.a", "x"));
    EXPECT_TRUE(tags.all().empty()) << "a change that could not be stored is not shown";
}

TEST(AppTags, ReadsDamagedStoresAsFarAsTheyMakeSense) {
    test::MemoryDefaults defaults;
    defaults.values["tidwen.appTags"] =
        PropertyListDictionary{{"com.example.A", PropertyListArray{"z"}},
                               {"com.example.a", PropertyListArray{"x", "X", "", std::string(100, 'y')}},
                               {"com.example.b", "no list"}};
    EXPECT_THAT(AppTags(defaults, Texts()).tags("com.example.a"), ElementsAre("x", "z"));
}

} // namespace
} // namespace tidwen
