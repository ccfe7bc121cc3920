#include "base/path.h"
#include "base/property_list.h"
#include "base/uuid.h"
#include "operations/removal_operation.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/undo_service.h"
#include "removal/chosen_items.h"
#include "removal/flow_fixture.h"
#include "removal/flow_types.h"
#include "removal/removal_texts.h"
#include "removal/stay_reason.h"
#include "scan/policy/trace_category.h"

#include "support/matchers.h"
#include "support/unprivileged.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace tidwen::test {
namespace {

using Step = std::function<void(FlowFixture&)>;
using Event = std::function<RemovalFlowModel::Answer(FlowFixture&)>;

void select(FlowFixture& fixture) {
    fixture.model->select({fixture.orphan.id});
}

const std::map<std::string, Event> events = {
    {"load", [](auto& b) { return b.model->loadTargets({b.bundle("Birch")}); }},
    {"load nothing", [](auto& b) { return b.model->loadTargets({Path("/nowhere.app")}); }},
    {"sweep", [](auto& b) { return b.model->scanOrphans(); }},
    {"cancel", [](auto& b) { return b.model->cancelScan(), RemovalFlowModel::Answer(); }},
    {"show", [](auto& b) { return b.model->show(stage::History{}); }},
    {"offer", [](auto& b) { return b.model->offer("It", {b.orphan}); }},
    {"close", [](auto& b) { return b.model->close(); }},
    {"confirm", [](auto& b) { return b.model->confirm(); }},
    {"answer", [](auto& b) { return b.model->answerQuitPrompt(QuitPromptChoice::forceContinue); }},
    {"undo", [](auto& b) { return b.model->undoLast(); }},
    {"work ends", [](auto& b) { return b.settle(), RemovalFlowModel::Answer(); }},
};

TEST(RemovalFlow, FollowsItsTableAndNothingElse) {
    struct Row {
        const char* stage;
        Step reach;
        std::map<std::string, std::string> next; ///< by event; every other event changes nothing
    };
    const auto home = [](const Stage& stage) { return [stage](FlowFixture& b) { b.model->show(stage); }; };
    const std::map<std::string, std::string> fromHome = {
        {"load", "scanning"}, {"load nothing", "scanning"}, {"sweep", "scanning"}, {"show", "history"}};
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
         {{"load", "scanning"},
          {"load nothing", "scanning"},
          {"sweep", "scanning"},
          {"show", "history"},
          {"confirm", "removing"}}},
        {"scanning", load, {{"cancel", "idle"}, {"work ends", "review"}}},
        {"scanning",
         [](FlowFixture& b) { b.model->show(stage::History{}), b.model->scanOrphans(); },
         {{"cancel", "history"}, {"work ends", "orphans"}}},
        {"review",
         [](FlowFixture& b) { b.review({"Alpine"}); },
         {{"load", "scanning"}, {"load nothing", "scanning"}, {"confirm", "removing"}, {"close", "idle"}}},
        {"review",
         [](FlowFixture& b) { b.review({"Alpine"}), b.model->select({}); },
         {{"load", "scanning"}, {"load nothing", "scanning"}, {"close", "idle"}}},
        {"orphans", sweep, {{"close", "installers"}}},
        {"orphans",
         [&](FlowFixture& b) { sweep(b), select(b); },
         {{"confirm", "removing"}, {"close", "installers"}}},
        {"removing",
         [](FlowFixture& b) { b.review({"Alpine"}), b.model->confirm(); },
         {{"work ends", "report"}}},
        {"report", [](FlowFixture& b) { b.remove({"Alpine"}); }, {{"close", "idle"}, {"undo", "report"}}},
    };
    for (const auto& row : rows)
        for (const auto& [event, happen] : events) {
            SCOPED_TRACE(row.stage + (" + " + event));
            FlowFixture fixture;
            row.reach(fixture);
            ASSERT_EQ(fixture.stage(), row.stage);
            const auto answer = happen(fixture);
            const auto next = row.next.find(event);
            if (next != row.next.end()) {
                EXPECT_TRUE(answer) << answer.error().key;
            } else if (event != "cancel" && event != "work ends" && event != "offer") {
                EXPECT_FALSE(answer) << "whoever asks is told";
            }
            EXPECT_EQ(fixture.stage(), next == row.next.end() ? row.stage : next->second);
        }
}

TEST(RemovalFlow, LeavesWhatAnApplicationThatStaysClaimsToo) {
    enum class Out { nobody, inTheSelection, atTheQuitQuestion, inAReset, butItIsNamed };
    for (const auto out :
         {Out::nobody, Out::inTheSelection, Out::atTheQuitQuestion, Out::inAReset, Out::butItIsNamed}) {
        SCOPED_TRACE(static_cast<int>(out));
        FlowFixture fixture;
        for (const auto* name : {"Alpine", "Birch"})
            writeBundle(fixture.volume,
                        fixture.bundle(name).string() + "/Contents/Library/LoginItems/Sync.app",
                        "com.example.sync", "Sync");
        // A plug-in of the one for the other.
        writeBundle(fixture.volume, fixture.bundle("Birch").string() + "/Contents/PlugIns/Look.appex",
                    "com.example.Alpine.look", "Look");
        const auto look = fixture.cache("Alpine.look");
        fixture.volume.write(look.string(), "x");
        const auto shared = fixture.cache("sync"), alpines = fixture.cache("Birch.com.example.Alpine");
        fixture.volume.write(shared.string(), "x");
        fixture.volume.write(alpines.string(), "named after both");
        fixture.review({"Alpine", "Birch"});
        auto& model = *fixture.model;
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
            fixture.settle();
            EXPECT_FALSE(fixture.has(shared));
            EXPECT_TRUE(fixture.has(fixture.bundle("Alpine")) && fixture.has(alpines));
            continue;
        }
        if (out == Out::atTheQuitQuestion) fixture.running.stubborn = {"com.example.Birch"};
        model.confirm();
        fixture.settle();
        model.answerQuitPrompt(QuitPromptChoice::cancelApp);
        fixture.settle();
        ASSERT_EQ(fixture.stage(), "report");
        std::set<std::string> left;
        for (const auto& each : std::get<stage::Report>(model.stage()).report.left)
            for (const auto& item : each.traces) {
                EXPECT_TRUE(left.insert(item.trace.displayName).second) << "named twice";
                const bool isLeftOut = out == Out::atTheQuitQuestion && each.target.name == "Birch";
                EXPECT_EQ(item.reason == StayReason::leftOut, isLeftOut);
                EXPECT_TRUE(each.target.name != "Alpine" || item.reason == StayReason::claimed);
            }
        EXPECT_EQ(fixture.has(shared), out != Out::nobody);
        EXPECT_EQ(left.contains(shared.string()), out != Out::nobody);
        EXPECT_FALSE(fixture.has(fixture.cache("Alpine")));
        EXPECT_EQ(fixture.has(alpines), out != Out::nobody);
        EXPECT_EQ(fixture.has(look), out != Out::nobody);
        EXPECT_EQ(fixture.has(fixture.bundle("Birch")), out != Out::nobody);
    }
}

TEST(RemovalFlow, ReportsWhatNoManifestCouldName) {
    FlowFixture fixture;
    const Path unnamed(fixture.cache("Alpine").string() + ".\xff");
    fixture.volume.write(unnamed.string(), "x");
    fixture.remove({"Alpine"});
    ASSERT_EQ(fixture.stage(), "report");
    EXPECT_THAT(std::get<stage::Report>(fixture.model->stage()).report.skippedNames,
                testing::ElementsAre(unnamed));
    EXPECT_TRUE(fixture.has(unnamed));
}

TEST(RemovalFlow, TellsWhatItLeavesBehind) {
    FlowFixture fixture;
    const Path suite("/Applications/Suite"), link("/Applications/Link.app");
    const auto app = suite / "Elm.app", data = Path("/Library/Caches/com.example.Elm");
    writeBundle(fixture.volume, app.string(), "com.example.Elm", "Elm");
    fixture.volume.write(data.string(), "x");
    fixture.volume.write((suite / ".DS_Store").string(), "x");
    fixture.volume.link(link.string(), app.string().c_str());
    fixture.volume.link("/Users/alice/Library/Logs", "/Volumes/Away");
    fixture.model->loadTargets({app});
    fixture.settle();
    fixture.model->confirm();
    fixture.settle();
    ASSERT_EQ(fixture.stage(), "report");
    const auto& report = std::get<stage::Report>(fixture.model->stage()).report;
    ASSERT_EQ(report.left.size(), 1u);
    EXPECT_EQ(report.left[0].traces[0].trace.displayName, data.string());
    EXPECT_THAT(report.emptiedFolders, testing::ElementsAre(suite));
    EXPECT_THAT(report.deadLinks, testing::ElementsAre(link));
    EXPECT_THAT(report.unseen.unreadableLocations, testing::Contains(Path("/Users/alice/Library/Logs")));
    const auto whole = fixture.volume.files().treeSize(report.quarantineRoot, 1'000)->allocatedBytes;
    EXPECT_LT(report.reclaimedBytes, static_cast<std::int64_t>(whole)) << "records free nothing";
    EXPECT_EQ(reportTexts(report, "Elm", fixture.texts).counts, "report.summary.removedCount 1 1")
        << "the application alone was moved, whatever else was done";
}

TEST(RemovalFlow, WhatCannotBePutBackLeavesNoFolder) {
    FlowFixture fixture;
    for (const bool movesToo : {false, true}) {
        fixture.review({"Alpine"});
        std::vector<Uuid> ids;
        for (const auto& trace : fixture.model->choice().findings().groups()[0].traces)
            if (std::holds_alternative<action::ResetPermissions>(trace.action)
                || (movesToo && trace.displayName == fixture.cache("Alpine").string()))
                ids.push_back(trace.id);
        fixture.model->select(ids);
        fixture.model->confirm();
        fixture.settle();
        ASSERT_EQ(fixture.stage(), "report");
        const auto& report = std::get<stage::Report>(fixture.model->stage()).report;
        EXPECT_EQ(report.operations.size(), ids.size());
        EXPECT_EQ(report.quarantineRoot.isRoot(), !movesToo);
        EXPECT_EQ(report.reclaimedBytes.has_value(), movesToo);
        EXPECT_EQ(listQuarantineFolders(fixture.user, fixture.volume.files())->size(), movesToo ? 1u : 0u);
        fixture.model->close();
    }
}

TEST(RemovalFlow, SaysWhatHasChanged) {
    FlowFixture fixture;
    auto& model = *fixture.model;
    fixture.review({"Alpine"});
    std::vector<FlowChange> changes;
    const auto watching = model.changed.connect([&](FlowChange change) { changes.push_back(change); });
    model.selectDefaults();
    model.setReviewFilter({.query = "x"});
    model.select({});
    model.confirm();
    model.close();
    EXPECT_THAT(changes,
                testing::ElementsAre(FlowChange::selection, FlowChange::listing, FlowChange::selection,
                                     FlowChange::problems, FlowChange::stage));
}

TEST(RemovalFlow, AResetKeepsTheApplicationAndGoingBackTakesItAgain) {
    FlowFixture fixture;
    fixture.review({"Alpine"});
    const auto app = fixture.bundle("Alpine").string(), cache = fixture.cache("Alpine").string();
    const std::string permissions = "com.example.Alpine";
    EXPECT_THAT(fixture.selected(), UnorderedElementsAre(app, cache, permissions));
    fixture.model->setMode(RemovalMode::reset);
    fixture.model->selectDefaults();
    EXPECT_THAT(fixture.selected(), UnorderedElementsAre(cache, permissions));
    EXPECT_THAT(fixture.model->choice().staying(), IsEmpty()) << "what a reset keeps was not forgotten";
    fixture.model->setMode(RemovalMode::uninstall);
    EXPECT_THAT(fixture.selected(), UnorderedElementsAre(app, cache, permissions));
    EXPECT_THAT(fixture.selected(), UnorderedElementsAre(app, cache, permissions));
    fixture.model->setMode(RemovalMode::reset);
    fixture.model->confirm();
    fixture.settle();
    EXPECT_TRUE(fixture.has(fixture.bundle("Alpine")));
    EXPECT_FALSE(fixture.has(fixture.cache("Alpine")));
}

TEST(RemovalFlow, KeepsWhatWasTakenOutWhenItLooksAgain) {
    FlowFixture fixture;
    fixture.review({"Alpine"});
    const auto app = fixture.bundle("Alpine").string(), cache = fixture.cache("Alpine").string();
    const std::string permissions = "com.example.Alpine", late = "/Users/alice/Library/Logs/Alpine";
    for (const auto& trace : fixture.model->choice().findings().groups().front().traces)
        if (trace.displayName == cache) fixture.model->setSelected({trace.id}, false);
    fixture.volume.write(late + "/log", "x");
    fixture.review({"Alpine"});
    EXPECT_THAT(fixture.selected(), UnorderedElementsAre(app, permissions, late)) << "what is new goes";
    fixture.model->setMode(RemovalMode::reset);
    fixture.review({"Alpine"});
    EXPECT_THAT(fixture.selected(), UnorderedElementsAre(permissions, late)) << "still a reset";
    fixture.model->setMode(RemovalMode::uninstall);
    EXPECT_THAT(fixture.selected(), UnorderedElementsAre(app, permissions, late));
    fixture.model->close();
    fixture.review({"Alpine"});
    EXPECT_THAT(fixture.selected(), UnorderedElementsAre(app, cache, permissions, late)) << "begun anew";
}

TEST(RemovalFlow, UndoesTheRunOfTheReport) {
    FlowFixture fixture;
    fixture.remove({"Alpine"});
    ASSERT_FALSE(fixture.has(fixture.bundle("Alpine")));
    EXPECT_TRUE(std::get<stage::Report>(fixture.model->stage()).report.verification);
    fixture.model->undoLast();
    fixture.model->undoLast();
    EXPECT_TRUE(fixture.model->isUndoing());
    const auto closed = fixture.model->close();
    ASSERT_FALSE(closed) << "what the undo comes to would never be told";
    EXPECT_EQ(closed.error().key, "error.stage.undoing");
    fixture.settle();
    EXPECT_TRUE(fixture.has(fixture.bundle("Alpine")));
    EXPECT_EQ(fixture.model->undoReport(), (UndoReport{.restoredCount = 2, .totalCount = 2, .failures = {}}));
    bool dismissed = false;
    fixture.model->onReportDismissed = [&] { dismissed = true; };
    fixture.model->close();
    EXPECT_TRUE(dismissed);
    EXPECT_FALSE(fixture.model->undoReport());
}

TEST(RemovalFlow, FindsByItsIdentifierWhatAnApplicationThatIsGoneLeft) {
    FlowFixture fixture;
    fixture.model->loadTargets({}, ProtectedTargets::refused,
                               {{"com.example.Gone", {"absent"}},
                                {"com.example.never", {"absent"}},
                                {"com.apple.Gone", {"absent"}}});
    fixture.settle();
    EXPECT_EQ(fixture.stage(), "review");
    EXPECT_EQ(fixture.model->errorMessage(),
              "com.apple.Gone: error.systemApplication\ncom.example.never: absent");
    EXPECT_THAT(fixture.selected(), Contains(fixture.orphan.displayName));
    fixture.model->confirm();
    fixture.settle();
    EXPECT_EQ(fixture.stage(), "report");
    EXPECT_FALSE(fixture.has(fixture.cache("Gone")));
    EXPECT_TRUE(fixture.has(fixture.cache("Alpine")));
}

TEST(RemovalFlow, KnowsWhatAnApplicationThatIsGoneEmbeddedAndDeclared) {
    FlowFixture fixture;
    const std::string bundle = "/Users/alice/.Trash/Gone 2.app", library = "/Users/alice/Library/";
    writeBundle(fixture.volume, bundle, "com.example.gone", "Gone");
    writeBundle(fixture.volume, bundle + "/Contents/PlugIns/Sync.appex", "org.sync.share", "Sync");
    const PropertyListDictionary entitlements{
        {"com.apple.security.application-groups", PropertyListArray{"group.org.shelf"}}};
    const PropertyListDictionary validation{{"SandboxProfileDataValidationEntitlementsKey", entitlements}};
    const PropertyListDictionary info{{"SandboxProfileDataValidationInfo", validation}};
    fixture.volume.write(library + "Containers/com.example.Gone/.com.apple.containermanagerd.metadata.plist",
                         writeXmlPropertyList(PropertyListDictionary{
                             {"MCMMetadataIdentifier", "com.example.gone"}, {"MCMMetadataInfo", info}}));
    for (const auto* place : {"Caches/org.sync.share/x", "Group Containers/group.org.shelf/x"})
        fixture.volume.write(library + place, "x");
    fixture.volume.write(library + "LaunchAgents/org.raft.sync.plist",
                         writeXmlPropertyList(PropertyListDictionary{
                             {"Label", "org.raft.sync"}, {"Program", "/Applications/Old Raft.app/sync"}}));
    fixture.volume.write(library + "Caches/Old Raft/x", "x");
    fixture.model->loadTargets({}, ProtectedTargets::refused,
                               {{"com.example.Gone", {"absent"}}, {"org.raft.sync", {"absent"}}});
    fixture.settle();
    EXPECT_THAT(fixture.selected(), testing::IsSupersetOf({library + "Caches/org.sync.share",
                                                           library + "Group Containers/group.org.shelf",
                                                           library + "Caches/Old Raft"}));
}

TEST(RemovalFlow, WorkThatComesBackLateChangesNothing) {
    FlowFixture fixture;
    fixture.model->loadTargets({fixture.bundle("Alpine")});
    fixture.background.drain();
    fixture.main.drain();
    fixture.background.drain(); // the scan has ended, its results wait for the main thread
    fixture.model->cancelScan();
    fixture.model->loadTargets({fixture.bundle("Birch")});
    fixture.main.drain();
    EXPECT_EQ(std::get<stage::Scanning>(fixture.model->stage()).name, "Birch");
    fixture.settle();
    EXPECT_THAT(fixture.selected(), Not(Contains(fixture.bundle("Alpine").string())));

    fixture.model->close();
    fixture.model->scanOrphans();
    fixture.background.drain();
    fixture.model->cancelScan();
    fixture.settle();
    EXPECT_EQ(fixture.stage(), "idle");
    EXPECT_THAT(fixture.model->sweep().traces(), IsEmpty());

    fixture.review({"Cedar"});
    fixture.model->confirm();
    fixture.model.reset();
    fixture.settle();
    EXPECT_TRUE(fixture.has(fixture.bundle("Cedar"))) << "a run whose owner is gone does not begin";
}

} // namespace
} // namespace tidwen::test
