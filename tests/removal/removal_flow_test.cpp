#include "removal/flow_fixture.h"
#include "removal/removal_texts.h"

#include "support/matchers.h"
#include "support/unprivileged.h"

namespace tidwen::test {
namespace {

using Step = std::function<void(FlowFixture&)>;

void select(FlowFixture& bench) {
    bench.model->select({bench.orphan.id});
}

const std::map<std::string, Step> events = {
    {"load", [](auto& b) { b.model->loadTargets({b.bundle("Birch")}); }},
    {"load nothing", [](auto& b) { b.model->loadTargets({Path("/nowhere.app")}); }},
    {"sweep", [](auto& b) { b.model->scanOrphans(); }},
    {"cancel", [](auto& b) { b.model->cancelScan(); }},
    {"show", [](auto& b) { b.model->show(stage::History{}); }},
    {"offer", [](auto& b) { b.model->offer("It", {b.orphan}); }},
    {"close", [](auto& b) { b.model->close(); }},
    {"confirm", [](auto& b) { b.model->confirm(); }},
    {"answer", [](auto& b) { b.model->answerQuitPrompt(QuitPromptChoice::forceContinue); }},
    {"undo", [](auto& b) { b.model->undoLast(); }},
    {"work ends", [](auto& b) { b.settle(); }},
};

TEST(RemovalFlow, FollowsItsTableAndNothingElse) {
    struct Row {
        const char* stage;
        Step reach;
        std::map<std::string, std::string> next; ///< by event; every other event changes nothing
    };
    const auto home = [](const Stage& stage) { return [stage](FlowFixture& b) { b.model->show(stage); }; };
    const std::map<std::string, std::string> fromHome = {
        {"load", "scanning"}, {"sweep", "scanning"}, {"show", "history"}};
    const auto load = events.at("load");
    const auto sweep = [](FlowFixture& b) {
        b.model->show(stage::Installers{});
        b.model->scanOrphans();
        b.settle();
    };
    const Row rows[] = {
        {"idle", [](FlowFixture&) {}, fromHome},
        {"startupItems", home(stage::StartupItems{}), fromHome},
        {"installers", home(stage::Installers{}), fromHome},
        {"history", home(stage::History{}), fromHome},
        {"installers", // with an offer
         [](FlowFixture& b) { b.model->show(stage::Installers{}), events.at("offer")(b); },
         {{"load", "scanning"}, {"sweep", "scanning"}, {"show", "history"}, {"confirm", "removing"}}},
        {"scanning", load, {{"cancel", "idle"}, {"work ends", "review"}}},
        {"scanning",
         [](FlowFixture& b) { b.model->show(stage::History{}), b.model->scanOrphans(); },
         {{"cancel", "history"}, {"work ends", "orphans"}}},
        {"review",
         [](FlowFixture& b) { b.review({"Alpine"}); },
         {{"load", "scanning"}, {"confirm", "removing"}, {"close", "idle"}}},
        {"review",
         [](FlowFixture& b) { b.review({"Alpine"}), b.model->select({}); },
         {{"load", "scanning"}, {"close", "idle"}}},
        {"orphans", sweep, {{"close", "installers"}}},
        {"orphans",
         [&](FlowFixture& b) { sweep(b), select(b); },
         {{"confirm", "removing"}, {"close", "installers"}}},
        {"removing",
         [](FlowFixture& b) { b.review({"Alpine"}), b.model->confirm(); },
         {{"work ends", "report"}}},
        {"report", [](FlowFixture& b) { b.remove({"Alpine"}); }, {{"close", "idle"}}},
    };
    for (const auto& row : rows)
        for (const auto& [event, happen] : events) {
            SCOPED_TRACE(row.stage + (" + " + event));
            FlowFixture bench;
            row.reach(bench);
            ASSERT_EQ(bench.stage(), row.stage);
            happen(bench);
            const auto next = row.next.find(event);
            EXPECT_EQ(bench.stage(), next == row.next.end() ? row.stage : next->second);
        }
}

TEST(RemovalFlow, LeavesWhatAnApplicationThatStaysClaimsToo) {
    enum class Out { nobody, inTheSelection, atTheQuitQuestion, inAReset, butItIsNamed };
    for (const auto out :
         {Out::nobody, Out::inTheSelection, Out::atTheQuitQuestion, Out::inAReset, Out::butItIsNamed}) {
        SCOPED_TRACE(static_cast<int>(out));
        FlowFixture bench;
        for (const auto* name : {"Alpine", "Birch"})
            writeBundle(bench.volume, bench.bundle(name).string() + "/Contents/Library/LoginItems/Sync.app",
                        "com.example.sync", "Sync");
        const auto shared = bench.cache("sync"), alpines = bench.cache("Birch.com.example.Alpine");
        bench.volume.write(shared.string(), "x");
        bench.volume.write(alpines.string(), "named after both");
        bench.review({"Alpine", "Birch"});
        auto& model = *bench.model;
        if (out == Out::inAReset) model.setMode(RemovalMode::reset);
        const auto& birch = model.choice().findings().groups()[1];
        for (const auto& trace : birch.traces)
            if (out == Out::inAReset
                || (out == Out::inTheSelection && trace.category == TraceCategory::application))
                model.setSelected({trace.id}, false);
        if (out == Out::butItIsNamed) {
            std::vector<Uuid> ids;
            for (const auto& group : model.choice().findings().groups())
                for (const auto& trace : group.traces)
                    if (trace.displayName == shared.string()) ids.push_back(trace.id);
            model.select(ids, ids);
            model.confirm();
            bench.settle();
            EXPECT_FALSE(bench.has(shared));
            EXPECT_TRUE(bench.has(bench.bundle("Alpine")) && bench.has(alpines));
            continue;
        }
        if (out == Out::atTheQuitQuestion) bench.running.stubborn = {"com.example.Birch"};
        model.confirm();
        bench.settle();
        model.answerQuitPrompt(QuitPromptChoice::cancelApp);
        bench.settle();
        ASSERT_EQ(bench.stage(), "report");
        std::set<std::string> left;
        for (const auto& each : std::get<stage::Report>(model.stage()).report.left)
            for (const auto& item : each.traces) {
                EXPECT_TRUE(left.insert(item.trace.displayName).second) << "named twice";
                EXPECT_TRUE(each.reach == Remainder::Reach::search || item.claimant || item.trace.contestedBy)
                    << item.trace.displayName;
                const bool isLeftOut = out == Out::atTheQuitQuestion && each.target.name == "Birch";
                EXPECT_EQ(item.reason == StayReason::leftOut, isLeftOut);
                EXPECT_TRUE(each.target.name != "Alpine" || item.reason == StayReason::claimed);
            }
        EXPECT_EQ(bench.has(shared), out != Out::nobody);
        EXPECT_EQ(left.contains(shared.string()), out != Out::nobody);
        EXPECT_FALSE(bench.has(bench.cache("Alpine")));
        EXPECT_EQ(bench.has(alpines), out != Out::nobody);
        EXPECT_EQ(bench.has(bench.bundle("Birch")), out != Out::nobody);
    }
}

TEST(RemovalFlow, ReportsWhatNoManifestCouldName) {
    FlowFixture bench;
    const Path unnamed(bench.cache("Alpine").string() + ".\xff");
    bench.volume.write(unnamed.string(), "x");
    bench.remove({"Alpine"});
    ASSERT_EQ(bench.stage(), "report");
    EXPECT_THAT(std::get<stage::Report>(bench.model->stage()).report.skippedNames,
                testing::ElementsAre(unnamed));
    EXPECT_TRUE(bench.has(unnamed));
}

TEST(RemovalFlow, TellsWhatItLeavesBehind) {
    FlowFixture bench;
    const Path suite("/Applications/Suite"), link("/Applications/Link.app");
    const auto app = suite / "Elm.app", data = Path("/Library/Caches/com.example.Elm");
    writeBundle(bench.volume, app.string(), "com.example.Elm", "Elm");
    bench.volume.write(data.string(), "x");
    bench.volume.write((suite / ".DS_Store").string(), "x");
    bench.volume.link(link.string(), app.string().c_str());
    bench.volume.link("/Users/alice/Library/Logs", "/Volumes/Away");
    bench.model->loadTargets({app});
    bench.settle();
    bench.model->confirm();
    bench.settle();
    ASSERT_EQ(bench.stage(), "report");
    const auto& report = std::get<stage::Report>(bench.model->stage()).report;
    ASSERT_EQ(report.left.size(), 1u);
    EXPECT_EQ(report.left[0].traces[0].trace.displayName, data.string());
    EXPECT_EQ(report.left[0].reach, Remainder::Reach::undo) << "a scan would no longer find it";
    EXPECT_THAT(report.emptiedFolders, testing::ElementsAre(suite));
    EXPECT_THAT(report.deadLinks, testing::ElementsAre(link));
    EXPECT_THAT(report.unseen.unreadableLocations, testing::Contains(Path("/Users/alice/Library/Logs")));
    const auto whole = bench.volume.files().treeSize(report.quarantineRoot, 1'000)->allocatedBytes;
    EXPECT_LT(report.reclaimedBytes, static_cast<std::int64_t>(whole)) << "records free nothing";
    EXPECT_EQ(reportTexts(report, "Elm", bench.texts).counts, "report.summary.removedCount 1 1")
        << "the application alone was moved, whatever else was done";
}

TEST(RemovalFlow, WhatCannotBePutBackLeavesNoFolder) {
    FlowFixture bench;
    for (const bool movesToo : {false, true}) {
        bench.review({"Alpine"});
        std::vector<Uuid> ids;
        for (const auto& trace : bench.model->choice().findings().groups()[0].traces)
            if (std::holds_alternative<action::ResetPermissions>(trace.action)
                || (movesToo && trace.displayName == bench.cache("Alpine").string()))
                ids.push_back(trace.id);
        bench.model->select(ids);
        bench.model->confirm();
        bench.settle();
        ASSERT_EQ(bench.stage(), "report");
        const auto& report = std::get<stage::Report>(bench.model->stage()).report;
        EXPECT_EQ(report.operations.size(), ids.size());
        EXPECT_EQ(report.quarantineRoot.isRoot(), !movesToo);
        EXPECT_EQ(report.reclaimedBytes.has_value(), movesToo);
        EXPECT_EQ(listQuarantineFolders(bench.user, bench.volume.files())->size(), movesToo ? 1u : 0u);
        bench.model->close();
    }
}

TEST(RemovalFlow, AResetKeepsTheApplicationAndGoingBackTakesItAgain) {
    FlowFixture bench;
    bench.review({"Alpine"});
    const auto app = bench.bundle("Alpine").string(), cache = bench.cache("Alpine").string();
    const std::string permissions = "com.example.Alpine";
    EXPECT_THAT(bench.selected(), UnorderedElementsAre(app, cache, permissions));
    bench.model->setMode(RemovalMode::reset);
    bench.model->selectDefaults();
    EXPECT_THAT(bench.selected(), UnorderedElementsAre(cache, permissions));
    EXPECT_THAT(bench.model->choice().staying(), IsEmpty()) << "what a reset keeps was not forgotten";
    bench.model->setMode(RemovalMode::uninstall);
    EXPECT_THAT(bench.selected(), UnorderedElementsAre(app, cache, permissions));
    EXPECT_THAT(bench.selected(), UnorderedElementsAre(app, cache, permissions));
    bench.model->setMode(RemovalMode::reset);
    bench.model->confirm();
    bench.settle();
    EXPECT_TRUE(bench.has(bench.bundle("Alpine")));
    EXPECT_FALSE(bench.has(bench.cache("Alpine")));
}

TEST(RemovalFlow, UndoesTheRunOfTheReport) {
    FlowFixture bench;
    bench.remove({"Alpine"});
    ASSERT_FALSE(bench.has(bench.bundle("Alpine")));
    EXPECT_TRUE(std::get<stage::Report>(bench.model->stage()).report.verification);
    bench.model->undoLast();
    bench.model->undoLast();
    EXPECT_TRUE(bench.model->isUndoing());
    bench.settle();
    EXPECT_TRUE(bench.has(bench.bundle("Alpine")));
    EXPECT_EQ(bench.model->undoReport(),
              (UndoReport{.restoredCount = 2, .totalCount = 2, .failures = {}, .mayHaveLost = true}));
    bool dismissed = false;
    bench.model->onReportDismissed = [&] { dismissed = true; };
    bench.model->close();
    EXPECT_TRUE(dismissed);
    EXPECT_FALSE(bench.model->undoReport());
}

TEST(RemovalFlow, WorkThatComesBackLateChangesNothing) {
    FlowFixture bench;
    bench.model->loadTargets({bench.bundle("Alpine")});
    bench.background.drain(); // the scan has ended, its results wait for the main thread
    bench.model->cancelScan();
    bench.model->loadTargets({bench.bundle("Birch")});
    bench.main.drain();
    EXPECT_EQ(std::get<stage::Scanning>(bench.model->stage()).name, "Birch");
    bench.settle();
    EXPECT_THAT(bench.selected(), Not(Contains(bench.bundle("Alpine").string())));

    bench.model->close();
    bench.model->scanOrphans();
    bench.background.drain();
    bench.model->cancelScan();
    bench.settle();
    EXPECT_EQ(bench.stage(), "idle");
    EXPECT_THAT(bench.model->sweep().traces(), IsEmpty());

    bench.review({"Cedar"});
    bench.model->confirm();
    bench.model.reset();
    bench.settle();
    EXPECT_TRUE(bench.has(bench.bundle("Cedar"))) << "a run whose owner is gone does not begin";
}

} // namespace
} // namespace tidwen::test
