#include "base/path.h"
#include "base/texts.h"
#include "operations/removal_operation.h"
#include "quarantine/quarantine_layout.h"
#include "removal/removal_plan.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include "support/matchers.h"

#include <fmt/core.h>
#include <optional>
#include <string>
#include <variant>

namespace tidwen::test {
namespace {

Trace trace(TraceCategory category, TraceAction action, bool requiresRoot = false) {
    return makeTrace(category, std::move(action), {}, Reversibility::irreversibleHarmless, "shown",
                     std::nullopt, requiresRoot);
}

Trace file(TraceCategory category, const std::string& path, bool requiresRoot = false) {
    return trace(category, action::MovePath{Path(path)}, requiresRoot);
}

struct Payload {
    std::string operator()(const operation::ResetPermissions& kind) const { return kind.bundleID; }
    std::string operator()(const operation::Bootout& kind) const { return kind.label; }
    std::string operator()(const operation::DeleteKeychainItem& kind) const { return kind.service; }
    std::string operator()(const operation::UnregisterApp& kind) const { return kind.bundleURL.string(); }
    std::string operator()(const operation::Move& kind) const {
        return kind.source.string() + " -> " + kind.destination.string();
    }
    std::string operator()(const auto&) const { return ""; }
};

/// "3 root move /a -> /b, reversible": everything in an operation that the plan decides. The displayed name
/// follows if the line does not already contain it.
std::string line(const RemovalOperation& each) {
    const auto payload = std::visit(Payload(), each.kind);
    const bool isPlain = payload.substr(0, payload.find(" -> ")) == each.displayName;
    return fmt::format("{} {} {} {}, {}{}", each.id, each.requiresRoot ? "root" : "user", kindName(each.kind),
                       payload, name(each.reversibility), isPlain ? "" : ", " + each.displayName);
}

RemovalTarget notes() {
    using enum TraceCategory;
    return {
        .target = {.bundleURL = Path("/Applications/./Notes.app"),
                   .bundleID = "com.example.notes",
                   .name = "No/tes"},
        .traces = {file(application, "/Applications/Notes.app", true),
                   file(preferences, "/Library/Preferences/n.plist", true),
                   trace(keychain, action::DeleteKeychainItem{"secret", true}),
                   file(caches, "/Users/alice/Library/Caches/n"),
                   trace(launchItems, action::Bootout{"loose", false}),
                   trace(launchItems,
                         action::BootoutAndMove{"job", Path("/Library/LaunchDaemons/job.plist"), true}, true),
                   file(preferences, "/Users/alice/Library/Preferences/n.plist"),
                   file(preferences, "/Users/alice/Library/Preferences/m.plist"),
                   trace(systemExtensions, action::Guidance{{{"by hand"}, {}}}),
                   file(receipts, "/private/var/db/receipts/n.bom", true),
                   trace(permissions, action::ResetPermissions{"com.example.notes"})}};
}

TEST(RemovalPlan, HasOneFixedOrder) {
    const QuarantineLayout layout{Path("/Q"), false};
    const auto plan = buildRemovalPlan({notes()}, layout, RemovalMode::uninstall);
    EXPECT_THAT(
        eachOf(plan, line),
        ElementsAre("1 user resetPermissions com.example.notes, irreversibleHarmless, shown",
                    "2 user bootout loose, reversible", "3 root bootout job, reversible",
                    "4 root deleteKeychainItem secret, irreversibleDestructive",
                    "5 root move /Library/LaunchDaemons/job.plist -> /Q/0005/job.plist, reversible",
                    "6 root move /Library/Preferences/n.plist -> /Q/0006/n.plist, reversible",
                    "7 user move /Users/alice/Library/Caches/n -> /Q/0007/n, reversible",
                    "8 user move /Users/alice/Library/Preferences/m.plist -> /Q/0008/m.plist, reversible",
                    "9 user move /Users/alice/Library/Preferences/n.plist -> /Q/0009/n.plist, reversible",
                    "10 root move /private/var/db/receipts/n.bom -> /Q/0010/n.bom, reversible",
                    "11 user unregisterApp /Applications/./Notes.app, irreversibleHarmless",
                    "12 root move /Applications/Notes.app -> /Q/0012/Notes.app, reversible",
                    "13 user flushPreferences , irreversibleHarmless",
                    "14 root flushPreferences , irreversibleHarmless"));
    EXPECT_EQ(plan[2].traceID, plan[4].traceID) << "the job and its file belong together";
    EXPECT_EQ(plan[2].bundleID, "com.example.notes");
}

TEST(RemovalPlan, NumbersABatchThroughAndKeepsTheApplicationInReset) {
    using enum TraceCategory;
    const RemovalTarget other{
        .target = {.bundleURL = Path("/Applications/B.app"), .bundleID = "b", .name = "B"},
        .traces = {file(caches, "/Library/Caches/b")}};
    const auto plan = buildRemovalPlan({notes(), other}, {Path("/Q"), true}, RemovalMode::reset);
    ASSERT_EQ(plan.size(), 12u);
    EXPECT_EQ(line(plan[4]),
              "5 root move /Library/LaunchDaemons/job.plist -> /Q/No-tes/0005/job.plist, reversible");
    EXPECT_EQ(line(plan[11]), "12 user move /Library/Caches/b -> /Q/B/0012/b, reversible");
    for (const auto& each : plan) {
        EXPECT_FALSE(std::holds_alternative<operation::UnregisterApp>(each.kind));
        EXPECT_TRUE(each.displayName.find(".app") == std::string::npos
                    && each.displayName.find(".bom") == std::string::npos);
    }
    const RemovalTarget byHand{.target = {},
                               .traces = {trace(systemExtensions, action::Guidance{{{"by hand"}, {}}})}};
    EXPECT_THAT(buildRemovalPlan({byHand}, {}, RemovalMode::uninstall), IsEmpty());
}

} // namespace
} // namespace tidwen::test
