#include "removal/removal_plan.h"

#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tidwen::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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

/// "3 root move /a -> /b (displayed, reversible)": everything of an operation that the plan decides.
std::string line(const RemovalOperation& each) {
    return fmt::format("{} {} {} {} ({}, {})", each.id, each.requiresRoot ? "root" : "user",
                       kindName(each.kind), std::visit(Payload(), each.kind), each.displayName,
                       name(each.reversibility));
}

std::vector<std::string> lines(const std::vector<RemovalOperation>& plan) {
    std::vector<std::string> all;
    for (const auto& each : plan)
        all.push_back(line(each));
    return all;
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
                   trace(systemExtensions, action::Guidance{{"by hand", {}}}),
                   file(receipts, "/private/var/db/receipts/n.bom", true),
                   trace(permissions, action::ResetPermissions{"com.example.notes"})}};
}

TEST(RemovalPlan, HasOneFixedOrder) {
    const QuarantineLayout layout{Path("/Q"), false};
    const auto plan = buildRemovalPlan({notes()}, layout, RemovalMode::uninstall, Texts());
    EXPECT_THAT(
        lines(plan),
        ElementsAre(
            "1 user resetPermissions com.example.notes (shown, irreversibleHarmless)",
            "2 user bootout loose (loose, reversible)", "3 root bootout job (job, reversible)",
            "4 root deleteKeychainItem secret (secret, irreversibleDestructive)",
            "5 root move /Library/LaunchDaemons/job.plist -> /Q/0005/job.plist "
            "(/Library/LaunchDaemons/job.plist, reversible)",
            "6 root move /Library/Preferences/n.plist -> /Q/0006/n.plist (/Library/Preferences/n.plist, "
            "reversible)",
            "7 user move /Users/alice/Library/Caches/n -> /Q/0007/n (/Users/alice/Library/Caches/n, "
            "reversible)",
            "8 user move /Users/alice/Library/Preferences/m.plist -> /Q/0008/m.plist "
            "(/Users/alice/Library/Preferences/m.plist, reversible)",
            "9 user move /Users/alice/Library/Preferences/n.plist -> /Q/0009/n.plist "
            "(/Users/alice/Library/Preferences/n.plist, reversible)",
            "10 root move /private/var/db/receipts/n.bom -> /Q/0010/n.bom (/private/var/db/receipts/n.bom, "
            "reversible)",
            "11 user unregisterApp /Applications/./Notes.app (operation.unregisterApp, irreversibleHarmless)",
            "12 root move /Applications/Notes.app -> /Q/0012/Notes.app (/Applications/Notes.app, reversible)",
            "13 user flushPreferences  (operation.flushPreferences, irreversibleHarmless)",
            "14 root flushPreferences  (operation.flushPreferences, irreversibleHarmless)"));
    EXPECT_EQ(plan[2].traceID, plan[4].traceID) << "the job and its file belong together";
    EXPECT_EQ(plan[2].bundleID, "com.example.notes");
}

TEST(RemovalPlan, NumbersABatchThroughAndKeepsTheApplicationInReset) {
    using enum TraceCategory;
    const RemovalTarget other{
        .target = {.bundleURL = Path("/Applications/B.app"), .bundleID = "b", .name = "B"},
        .traces = {file(caches, "/Library/Caches/b")}};
    const auto plan = buildRemovalPlan({notes(), other}, {Path("/Q"), true}, RemovalMode::reset, Texts());
    ASSERT_EQ(plan.size(), 12u);
    EXPECT_EQ(line(plan[4]), "5 root move /Library/LaunchDaemons/job.plist -> /Q/No-tes/0005/job.plist "
                             "(/Library/LaunchDaemons/job.plist, reversible)");
    EXPECT_EQ(line(plan[11]),
              "12 user move /Library/Caches/b -> /Q/B/0012/b (/Library/Caches/b, reversible)");
    for (const auto& each : plan) {
        EXPECT_FALSE(std::holds_alternative<operation::UnregisterApp>(each.kind));
        EXPECT_TRUE(each.displayName.find(".app") == std::string::npos
                    && each.displayName.find(".bom") == std::string::npos);
    }
    const RemovalTarget byHand{.target = {},
                               .traces = {trace(systemExtensions, action::Guidance{{"by hand", {}}})}};
    EXPECT_THAT(buildRemovalPlan({byHand}, {}, RemovalMode::uninstall, Texts()), IsEmpty());
}

} // namespace
} // namespace tidwen::test
