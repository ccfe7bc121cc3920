#include "base/path.h"
#include "base/property_list.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "inventory/home_grid.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/protected_apps.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"

#include "inventory/app_inventory.h"
#include "inventory/usage_probe.h"
#include "platform/file_code_signatures.h"
#include "platform/usage_records.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/memory_defaults.h"
#include "support/stand_ins.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/time.h>
#include <vector>

namespace tidwen {
namespace {

using namespace std::chrono_literals;

const Timestamp now = *parseIso8601("2026-11-14T12:00:00Z");

InstalledApp app(const std::string& name, std::optional<int> daysAgo,
                 std::optional<std::int64_t> size = std::nullopt) {
    InstalledApp result;
    result.url = Path("/Applications/" + name + ".app");
    result.name = name;
    result.bundleID = "com.example." + name;
    result.sizeBytes = size;
    AppUsage usage;
    if (daysAgo) usage.evidence = {UsageEvidence::Kind::launchRecord, now - 24h * *daysAgo};
    result.usage = usage;
    return result;
}

class HomeGrid : public testing::Test {
  protected:
    std::vector<std::string> shown(HomeGridOptions options) {
        std::vector<std::string> lines;
        std::vector<SharedApp> shared;
        for (const auto& app : apps)
            shared.push_back(std::make_shared<const InstalledApp>(app));
        for (const auto& group : arrangeHomeGrid(shared, options, tags, protectedApps, {}, now, names)) {
            auto line = group.id + ":";
            for (const auto& each : group.apps)
                line += " " + each->name;
            lines.push_back(line);
        }
        return lines;
    }

    test::MemoryDefaults defaults;
    const Texts texts;
    AppTags tags{defaults, texts};
    ProtectedApps protectedApps{defaults};
    HomeNames names;
    std::vector<InstalledApp> apps;
};

TEST_F(HomeGrid, BandsFollowTheThreshold) {
    struct Case {
        const char* why;
        InstalledApp app;
        UsageBand band;
    };
    auto running = app("a", 900);
    running.usage->isRunning = true;
    auto agent = app("a", 900);
    agent.isBackgroundAgent = true;
    auto helper = app("a", std::nullopt);
    helper.hasResidentHelper = true;
    const Case cases[] = {
        {"yesterday", app("a", 1), UsageBand::recent},
        {"thirty days", app("a", 30), UsageBand::recent},
        {"a while", app("a", 31), UsageBand::earlier},
        {"the threshold", app("a", 182), UsageBand::earlier},
        {"longer", app("a", 183), UsageBand::unused},
        {"no evidence", app("a", std::nullopt), UsageBand::unknown},
        {"runs now", running, UsageBand::recent},
        {"agent", agent, UsageBand::background},
        {"resident helper", helper, UsageBand::background},
        {"in the future", app("a", -3), UsageBand::recent},
    };
    for (const auto& c : cases)
        EXPECT_EQ(usageBand(c.app, UnusedThreshold::sixMonths, now), c.band) << c.why;
}

TEST_F(HomeGrid, GroupsSortsAndFilters) {
    apps = {app("Anchor", 400, 10), app("Buoy", 2, 30), app("Cutter", 300, 500), app("Dinghy", std::nullopt)};
    apps[0].category = "public.app-category.puzzle-games";
    apps[1].category = "public.app-category.music";
    apps[2].category = "org.example.odd";
    tags.add("com.example.Buoy", "Sea");
    tags.add("com.example.Cutter", "Sea");
    tags.add("com.example.CUTTER", "Fast");
    protectedApps.toggle("com.example.buoy");

    EXPECT_THAT(shown({}), ElementsAre("unused: Cutter Anchor", "recent: Buoy", "unknown: Dinghy"));
    EXPECT_THAT(shown({.grouping = HomeGrouping::none, .sort = HomeSort::lastUsed}),
                ElementsAre("all: Buoy Cutter Anchor Dinghy"));
    EXPECT_THAT(shown({.grouping = HomeGrouping::tag}),
                ElementsAre("Fast: Cutter", "Sea: Buoy Cutter", ": Anchor Dinghy"));
    EXPECT_THAT(shown({.grouping = HomeGrouping::category}),
                ElementsAre("public.app-category.games: Anchor", "public.app-category.music: Buoy",
                            "other: Cutter Dinghy"));
    EXPECT_THAT(shown({.grouping = HomeGrouping::none, .query = " SEA "}), ElementsAre("all: Buoy Cutter"));
    EXPECT_THAT(shown({.grouping = HomeGrouping::none, .onlyUnused = true}),
                ElementsAre("all: Anchor Cutter"));
    EXPECT_THAT(shown({.grouping = HomeGrouping::none, .onlyProtected = true}), ElementsAre("all: Buoy"));
    EXPECT_THAT(shown({.grouping = HomeGrouping::none, .tag = "fast"}), ElementsAre("all: Cutter"));
}

TEST(UsageProbe, ReadsTheDateThatTheSystemKeeps) {
    using namespace std::string_literals;
    const auto attribute = "\xa0\x25\x86\x60\0\0\0\0\x13\x06\x12\x0d\0\0\0\0"s;
    EXPECT_EQ(parseLastUsedDate(attribute), parseIso8601("2021-04-26T02:29:52Z"));
    EXPECT_EQ(parseLastUsedDate(attribute.substr(1)), std::nullopt);
    EXPECT_EQ(parseLastUsedDate(std::string(16, '\xff')), std::nullopt);
    EXPECT_EQ(parseLastUsedDate(std::string(16, '\0')), std::nullopt);
}

TEST(AppInventory, StreamsInOrderAndMeasuresAgainOnlyWhatChanged) {
    const test::TemporaryVolume volume;
    test::writeBundle(volume, "/Applications/Buoy.app", "com.example.buoy", "Buoy");
    test::writeBundle(volume, "/Applications/Anchor.app", "com.example.anchor", "Anchor");
    test::writeBundle(volume, "/Applications/Broken.app/Contents", "", "Broken");
    volume.write("/Users/alice/Library/Preferences/com.example.buoy.plist", "x");
    volume.write("/Library/LaunchDaemons/d.plist",
                 writeXmlPropertyList(PropertyListDictionary{{"Label", "com.example.anchor.daemon"}}));
    const FileCodeSignatures signatures(volume.files());
    const test::FakeApplications running;
    AppInventory inventory({volume.files(), signatures, running}, test::alice());

    std::vector<std::string> streamed;
    auto apps = inventory.build({}, [&](const InstalledApp& each) { streamed.push_back(each.name); });
    EXPECT_THAT(streamed, ElementsAre("Anchor", "Buoy"));
    ASSERT_EQ(apps.size(), 2u);
    EXPECT_TRUE(apps[0].hasResidentHelper);
    EXPECT_FALSE(apps[1].hasResidentHelper);
    EXPECT_EQ(apps[1].usage->evidence.kind, UsageEvidence::Kind::appData);

    const struct Index : UsageRecords {
        UsageRecord of(const Path& item) const override {
            return item.lastComponent() == "Anchor.app" ? UsageRecord{Timestamp(std::chrono::hours(1)), 7}
                                                        : UsageRecord{{}, 3};
        }
    } index;
    const auto indexed = AppInventory({volume.files(), signatures, running, &index}, test::alice()).build();
    EXPECT_EQ(indexed[0].usage->evidence,
              (UsageEvidence{UsageEvidence::Kind::launchRecord, Timestamp(std::chrono::hours(1))}));
    EXPECT_EQ(indexed[0].usage->useCount, 7);
    EXPECT_EQ(indexed[1].usage->evidence.kind, UsageEvidence::Kind::appData) << "what has no date there";
    EXPECT_EQ(indexed[1].usage->useCount, 3);

    int measured = 0;
    const auto count = [&](const InstalledApp&) { ++measured; };
    inventory.measure(apps, {}, count);
    EXPECT_EQ(measured, 2);
    const timeval dates[2] = {{2'000'000'000, 0}, {2'000'000'000, 0}}; // an update of one of them
    ASSERT_EQ(utimes(volume.host("/Applications/Buoy.app/Contents/Info.plist").c_str(), dates), 0);
    apps = inventory.build();
    EXPECT_TRUE(apps[0].sizeBytes.has_value());
    inventory.measure(apps, {}, count);
    EXPECT_EQ(measured, 3);

    StopSource source;
    source.requestStop();
    EXPECT_TRUE(inventory.build(source.token()).empty());
}

} // namespace
} // namespace tidwen
