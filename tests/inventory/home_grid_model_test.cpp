#include "base/list_change.h"
#include "base/path.h"
#include "base/property_list.h"
#include "base/texts.h"
#include "inventory/app_inventory.h"
#include "inventory/home_grid_model.h"
#include "inventory/known_apps.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/protected_apps.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"

#include "platform/file_code_signatures.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/memory_defaults.h"
#include "support/stand_ins.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {
namespace {

class HomeModel : public testing::Test {
  protected:
    HomeModel() {
        install("Anchor", 100);
        install("Buoy", 200'000);
        install("Cutter", 50'000);
        preferences.homeGrouping.set("none");
    }
    void install(const std::string& name, std::size_t bytes) {
        const auto path = "/Applications/" + name + ".app";
        test::writeBundle(volume, path, "com.example." + name, name);
        volume.write(path + "/Contents/Resources/data", std::string(bytes, 'x'));
    }
    std::vector<std::string> shown() const {
        return eachOf(model->rows.rows(),
                      [](const HomeRow& row) { return row.app ? row.app->name : "[" + row.groupID + "]"; });
    }
    const HomeRow& row(const std::string& name) const {
        const auto& rows = model->rows.rows();
        return *std::find_if(rows.begin(), rows.end(),
                             [&](const auto& each) { return each.app && each.app->name == name; });
    }
    std::vector<bool> haveSizes() const {
        return eachOf(model->apps(), [](const SharedApp& app) { return app->sizeBytes.has_value(); });
    }

    test::TemporaryVolume volume;
    test::TemporaryFolder own;
    FileCodeSignatures signatures{volume.files()};
    test::FakeApplications running;
    test::MemoryDefaults defaults;
    test::FixedClock clock;
    test::SteppedQueues queues;
    Texts texts;
    AppPreferences preferences{defaults};
    AppTags tags{defaults, texts};
    ProtectedApps protectedApps{defaults};
    AppInventory inventory{{volume.files(), signatures, running},
                           test::alice(),
                           KnownAppsFile(own.path() / "known.json", "a Mac")};
    std::optional<HomeGridModel> model{std::in_place,
                                       HomeGridModel::Ports{inventory, preferences, tags, protectedApps,
                                                            texts, clock, queues.main, queues.background}};
};

TEST_F(HomeModel, ShowsNamesFirstAndMovesThemOnceAllSizesAreKnown) {
    using enum HomeGridModel::Phase;
    preferences.homeSort.set("size");
    std::vector<RowChange::Kind> changes;
    const auto following =
        model->rows.changed.connect([&](const RowChange& change) { changes.push_back(change.kind); });
    bool isDone = false;
    model->load([&] { isDone = true; });
    queues.background.drain();
    queues.main.drain();
    EXPECT_EQ(model->phase.get(), measuring);
    EXPECT_THAT(shown(), ElementsAre("[all]", "Anchor", "Buoy", "Cutter"));
    EXPECT_THAT(haveSizes(), ElementsAre(false, false, false));
    EXPECT_FALSE(isDone);

    changes.clear();
    queues.settle();
    EXPECT_TRUE(isDone);
    EXPECT_EQ(model->phase.get(), ready);
    EXPECT_THAT(haveSizes(), ElementsAre(true, true, true));
    ASSERT_GE(changes.size(), 4u);
    changes.resize(4);
    EXPECT_THAT(changes, testing::Each(RowChange::Kind::changed)) << "before anything moves";
    EXPECT_THAT(shown(), ElementsAre("[all]", "Buoy", "Cutter", "Anchor"));
    EXPECT_EQ(model->rows.rows().front().size, model->inventory.get().size);
    EXPECT_GT(model->inventory.get().size.bytes, 250'000);
}

TEST_F(HomeModel, FollowsTagsProtectionPreferencesAndWhoRuns) {
    model->load();
    queues.settle();
    tags.add("com.example.Buoy", "Sea");
    EXPECT_THAT(row("Buoy").tags, ElementsAre("Sea"));
    protectedApps.toggle("com.example.Anchor");
    EXPECT_TRUE(row("Anchor").isProtected);
    defaults.values["tidwen.protectedBundleIDs"] = PropertyListArray{"com.example.Cutter"};
    protectedApps.reload();
    EXPECT_FALSE(row("Anchor").isProtected);
    EXPECT_TRUE(row("Cutter").isProtected);
    preferences.homeGrouping.set("tag");
    EXPECT_THAT(shown(), ElementsAre("[Sea]", "Buoy", "[]", "Anchor", "Cutter"));
    running.obedient = {"com.example.Cutter"};
    model->refreshRunning();
    queues.settle();
    EXPECT_TRUE(row("Cutter").app->usage->isRunning);
    auto options = model->options();
    options.onlyProtected = true;
    model->setOptions(options);
    EXPECT_THAT(shown(), ElementsAre("[]", "Cutter"));
}

TEST_F(HomeModel, LooksAgainWhileItLooksAndCanBeCalledOff) {
    int ended = 0;
    const auto count = [&] { ++ended; };
    model->load(count);
    queues.background.drain();
    install("Dinghy", 1);
    model->load(count); // results of the first load are still queued
    queues.settle();
    EXPECT_EQ(ended, 2);
    EXPECT_THAT(shown(), ElementsAre("[all]", "Anchor", "Buoy", "Cutter", "Dinghy"));
    std::filesystem::remove_all(volume.host("/Applications/Dinghy.app"));
    model->load(count);
    model->cancel();
    queues.settle();
    EXPECT_EQ(ended, 3);
    EXPECT_EQ(shown().size(), 5u);
    model->load(count);
    queues.settle();
    EXPECT_EQ(shown().size(), 4u);
    model->load(count);
    model.reset(); // while it loads
    queues.settle();
    EXPECT_EQ(ended, 4);
}

TEST_F(HomeModel, KnowsSizesAndLastUseOfTheLastStart) {
    volume.write("/Users/alice/Library/Preferences/com.example.Buoy.plist", "x");
    model->load();
    queues.settle();
    AppInventory later({volume.files(), signatures, running}, test::alice(),
                       KnownAppsFile(own.path() / "known.json", "a Mac"));
    int fromBefore = 0;
    const auto apps = later.build({}, [&](const InstalledApp& app) {
        fromBefore += app.sizeBytes && app.usage && (app.name != "Buoy" || app.usage->evidence.date);
    });
    EXPECT_EQ(fromBefore, 3);
    EXPECT_EQ(apps, eachOf(model->apps(), [](const SharedApp& app) { return *app; }));
    EXPECT_THAT(KnownAppsFile(own.path() / "known.json", "another Mac").read(), IsEmpty());
}

TEST(KnownAppsFile, KeepsTheMacsThatWereSeenLastAndBelievesNothingElse) {
    const test::TemporaryFolder folder;
    const auto path = folder.path() / "tidwen/known.json";
    const KnownApps apps = {{Path("/A.app"), {7, 100, UsageEvidence{UsageEvidence::Kind::none, {}}}},
                            {Path("/B.app"), {8, std::nullopt, std::nullopt}}};
    for (std::size_t i = 0; i <= KnownAppsFile::maxMacs; ++i)
        EXPECT_TRUE(KnownAppsFile(path, std::to_string(i)).store(apps));
    EXPECT_THAT(KnownAppsFile(path, "0").read(), IsEmpty());
    EXPECT_EQ(KnownAppsFile(path, "1").read(), apps);

    const std::string head = R"({"macs":[{"mac":"m","apps":)", tail = "}]}";
    const char* const hostile[] = {"1",
                                   "[]",
                                   R"({"/A.app":1})",
                                   R"({"A.app":{"changed":1}})",
                                   R"({"/A.app":{"changed":-1,"bytes":1}})",
                                   R"({"/A.app":{"changed":18446744073709551615}})",
                                   R"({"/A.app":{"changed":"1"}})"};
    for (const auto* each : hostile) {
        std::ofstream(path) << head << each << tail;
        EXPECT_THAT(KnownAppsFile(path, "m").read(), IsEmpty()) << each;
    }
    std::ofstream(path) << head
                        << R"({"/A.app":{"changed":1,"bytes":-5,"evidence":"appData","lastUsed":"never"}})"
                        << tail;
    EXPECT_EQ(KnownAppsFile(path, "m").read(), (KnownApps{{Path("/A.app"), {1, {}, {}}}}));
    std::filesystem::resize_file(path, 1u << 30);
    EXPECT_THAT(KnownAppsFile(path, "m").read(), IsEmpty());
    EXPECT_TRUE(KnownAppsFile(path, "m").store(apps)) << "a damaged file is replaced";
    EXPECT_EQ(KnownAppsFile(path, "m").read(), apps);
}

} // namespace
} // namespace tidwen
