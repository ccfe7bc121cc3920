#include "base/message.h"
#include "base/path.h"
#include "base/property_list.h"
#include "operations/admin_batch.h"
#include "operations/admin_script_runner.h"
#include "operations/privileged_runner.h"
#include "operations/recording_runner.h"
#include "operations/removal_operation.h"
#include "operations/tool_arguments.h"
#include "operations/tool_paths.h"
#include "operations/user_scope_runner.h"
#include "platform/file_system.h"
#include "platform/process_runner.h"
#include "platform/workspace.h"
#include "scan/policy/path_policy.h"
#include "support/fixtures.h"
#include "support/recording_tools.h"
#include "support/stand_ins.h"
#include "support/watched_files.h"

#include <cerrno>
#include <fmt/ranges.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {
namespace {

using test::RecordingTools;
using test::step;
using namespace std::chrono_literals;

const std::string quarantine = "/Users/alice/.Trash/Tidwen - Marlin Notes - 2024-01-01 10-00-00";

operation::Move toQuarantine(const std::string& source) {
    return {Path(source), Path(quarantine + "/0001/" + Path(source).lastComponent())};
}

/// Both runners with recording tools, on a volume with one quarantine folder.
class RunnersTest : public testing::Test {
  protected:
    RunnersTest() { volume.makeFolder(quarantine); }

    OperationResult asUser(RemovalOperation::Kind kind) {
        UserScopeRunner runner({volume.files(), tools, keychain, applications, log}, test::alice());
        return runner.run({step(7, std::move(kind))}).at(0);
    }

    std::vector<OperationResult> asAdministrator(const std::vector<RemovalOperation>& operations) {
        return AdminScriptRunner(AdminScriptRunner::throughOsascript(tools), volume.files(), test::alice(),
                                 log)
            .run(operations);
    }

    test::TemporaryVolume volume;
    test::RecordingLog log;
    RecordingTools tools;
    test::FakeKeychain keychain;
    test::FakeApplications applications;
};

TEST_F(RunnersTest, UserLevelStepsAskTheRightToolAndReadItsStatus) {
    const Path plist("/Users/alice/Library/LaunchAgents/com.example.agent.plist");
    volume.write(plist.string(),
                 writeXmlPropertyList(PropertyListDictionary{{"Label", "com.example.agent"}}));
    struct Case {
        RemovalOperation::Kind kind;
        std::string command;
        std::vector<int> fine; ///< exit codes that count as success
        std::string otherwise; ///< the key of status 5
        std::string whenMissing;
    };
    // clang-format off
    const Case cases[] = {
        {operation::ResetPermissions{"com.example.app"}, "/usr/bin/tccutil reset All com.example.app", {0},
         "failure.tccutilFailed", "failure.tccutilUnavailable"},
        {operation::Bootout{"com.example.agent", false}, "/bin/launchctl bootout gui/501/com.example.agent",
         {0, 3, 113}, "failure.launchctlExit %lld", "failure.launchctlUnavailable"},
        {operation::Bootstrap{plist, false}, "/bin/launchctl bootstrap gui/501 " + plist.string(), {0, 17},
         "failure.launchctlExit %lld", "failure.launchctlUnavailable"},
        {operation::UnregisterApp{Path("/Applications/A.app")},
         std::string(toolPaths::lsregister) + " -u /Applications/A.app", {0}, "failure.exit %@",
         "failure.toolUnavailable"},
        {operation::FlushPreferences{}, "/usr/bin/killall cfprefsd", {0, 1}, "failure.exit %@",
         "failure.toolUnavailable"},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        int status = 0;
        tools.answer = [&](const auto& call) -> RecordingTools::Answer {
            return ProcessResult{call.arguments[0] == "print-disabled" ? 1 : status, "", ""};
        };
        tools.calls.clear();
        for (const int fine : c.fine) {
            status = fine;
            EXPECT_EQ(asUser(c.kind), OperationResult::success(7)) << fine;
        }
        EXPECT_EQ(fmt::format("{} {}", tools.calls[0].executable, fmt::join(tools.calls[0].arguments, " ")),
                  c.command);
        status = 5;
        const auto reason = asUser(c.kind).failureReason;
        ASSERT_TRUE(reason);
        EXPECT_EQ(reason->key, c.otherwise);
        EXPECT_EQ(reason->arguments.empty(), c.otherwise.find('%') == std::string::npos);
        tools.answer = [](const auto&) { return RecordingTools::missing(); };
        EXPECT_EQ(asUser(c.kind).failureReason, Message{c.whenMissing});
        tools.answer = [](const auto&) { return RecordingTools::hanging(); };
        EXPECT_EQ(asUser(c.kind).failureReason, Message{"failure.timedOut"});
    }

    // A disabled job is not loaded, in the wording of either release.
    for (const auto& [word, isFine] : {std::pair{"disabled", true}, {"true", true}, {"enabled", false}}) {
        tools.answer = [&](const auto& call) -> RecordingTools::Answer {
            if (call.arguments[0] != "print-disabled") return ProcessResult{5, "", ""};
            return ProcessResult{0, fmt::format("\t\"com.example.agent\" => {}\n", word), ""};
        };
        EXPECT_EQ(asUser(operation::Bootstrap{plist, false}).succeeded, isFine) << word;
    }

    // Newer systems say of a job that is loaded what they say of a broken one, too.
    for (const auto& [status, printed, isFine] :
         {std::tuple{5, 0, true}, {37, 0, true}, {37, 113, false}, {125, 0, false}}) {
        tools.answer = [&, status = status, printed = printed](const auto& call) -> RecordingTools::Answer {
            if (call.arguments == std::vector<std::string>{"print", "gui/501/com.example.agent"})
                return ProcessResult{printed, "", ""};
            return ProcessResult{call.arguments[0] == "print-disabled" ? 1 : status, "", ""};
        };
        EXPECT_EQ(asUser(operation::Bootstrap{plist, false}).succeeded, isFine) << status << " " << printed;
    }

    // A job that was told to end is listed until it has gone, and is not the one that is to be loaded.
    const std::string ending = "gui/501/com.example.agent = {\n\tstate = SIGTERMed\n}\n";
    for (const auto& [isPatient, isFine] : {std::pair{true, true}, {false, false}}) {
        int bootstraps = 0;
        tools.answer = [&](const auto& call) -> RecordingTools::Answer {
            if (call.arguments[0] == "print") return ProcessResult{0, ending, ""};
            if (call.arguments[0] == "print-disabled") return ProcessResult{1, "", ""};
            return ProcessResult{++bootstraps < 3 ? 37 : 0, "", ""};
        };
        UserScopeRunner runner({volume.files(), tools, keychain, applications, log, isPatient ? 10s : 0s},
                               test::alice());
        EXPECT_EQ(runner.run({step(7, operation::Bootstrap{plist, false})}).at(0).succeeded, isFine);
    }

    // One that is slow to end does end; one that runs on has not been unloaded.
    for (const auto& [printed, output, isFine] :
         {std::tuple{113, std::string(), true}, {0, ending, true}, {0, "state = running", false}}) {
        tools.answer = [&, printed = printed, output = output](const auto& call) -> RecordingTools::Answer {
            if (call.arguments[0] == "print") return ProcessResult{printed, output, ""};
            return ProcessResult{36, "", ""};
        };
        EXPECT_EQ(asUser(operation::Bootout{"com.example.agent", false}).succeeded, isFine) << output;
    }

    // Without a login at the screen, as over ssh, the user has no domain of his own.
    for (const int status : {112, 125}) {
        tools.answer = [&](const auto&) { return ProcessResult{status, "", ""}; };
        EXPECT_EQ(asUser(operation::Bootout{"com.example.agent", false}).failureReason,
                  Message{"failure.noUserSession"});
    }
}

TEST_F(RunnersTest, WhatOnlyTheSystemForbidsIsToldWithThePaneThatLetsItThrough) {
    struct Guarded : test::WatchedFiles {
        using test::WatchedFiles::WatchedFiles;
        MoveResult move(const Path& from, const Path&) override {
            return tl::unexpected(FileError{FileFault::denied, from, EPERM});
        }
    } guarded(volume.files());
    volume.write("/Applications/A.app/Contents/Info.plist", "x");
    volume.write("/Users/alice/Library/Caches/a", "x");
    UserScopeRunner runner({guarded, tools, keychain, applications, log}, test::alice());
    const Path to(quarantine + "/0001/A");
    const auto results = runner.run({step(1, operation::Move{Path("/Applications/A.app"), to}),
                                     step(2, operation::Move{Path("/Users/alice/Library/Caches/a"), to})});
    EXPECT_EQ(results[0].failureReason,
              (Message{"failure.appManagement %@", {std::string(appManagementAddress)}}));
    EXPECT_EQ(results[1].failureReason, Message{"failure.guarded"});

    // Root is no freer: a bundle of a package or of the store is root's, and guarded all the same.
    volume.write("/Library/Caches/b", "x");
    for (const bool isTrashClosed : {false, true}) {
        tools.answer = [&](const auto&) -> RecordingTools::Answer {
            return ProcessResult{0, isTrashClosed ? "OP 1 FAIL 1\rOP 2 FAIL 1\r" : "OP 1 FAIL 1\rOP 2 OK\r",
                                 ""};
        };
        const auto asRoot = asAdministrator(
            {step(1, toQuarantine("/Applications/A.app")), step(2, toQuarantine("/Library/Caches/b"))});
        EXPECT_EQ(asRoot[0].failureReason,
                  isTrashClosed ? (Message{"failure.exit %@", {"1"}}) : results[0].failureReason);
    }
}

TEST_F(RunnersTest, UserLevelStepsWithoutATool) {
    applications.obedient = {"com.example.app"};
    EXPECT_TRUE(asUser(operation::QuitApplication{"com.example.app"}).succeeded);
    applications.stubborn = {"com.example.app"};
    EXPECT_EQ(asUser(operation::QuitApplication{"com.example.app"}).failureReason,
              Message{"failure.appDidNotQuit"});

    const auto status = [](const char* number) { return Message{"failure.keychainStatus %lld", {number}}; };
    const Message refused{"failure.keychainRefused"};
    const std::tuple<int, int, std::size_t, std::optional<Message>> cases[] = {
        {0, 0, 2, std::nullopt},
        {0, -25300, 2, std::nullopt},
        {-25300, 0, 2, std::nullopt},
        {-25300, -25300, 2, status("-25300")},
        {-25244, 0, 1, refused},
        {0, -25244, 2, refused},
        {-25308, 0, 1, Message{"failure.keychainLocked"}},
        {0, -25293, 2, Message{"failure.keychainLocked"}},
        {-25307, 0, 1, Message{"failure.keychainGone"}},
        {-25294, 0, 1, Message{"failure.keychainGone"}},
        {-50, 0, 1, status("-50")}};
    for (const auto& [generic, internet, asked, reason] : cases) {
        keychain = test::FakeKeychain();
        keychain.generic = generic;
        keychain.internet = internet;
        EXPECT_EQ(asUser(operation::DeleteKeychainItem{"-Marlin", false}).failureReason, reason);
        EXPECT_EQ(keychain.asked.size(), asked);
    }
    EXPECT_TRUE(tools.calls.empty());
}

TEST_F(RunnersTest, WhatAToolCouldMisunderstandReachesNone) {
    std::vector<RemovalOperation::Kind> refusedByBoth = {
        operation::Move{Path("/System/Library/x"), Path(quarantine + "/0001/x")}};
    // An empty argument would mean every application, the whole session, every password.
    const std::string zero("a\0b", 3);
    for (const auto& text : {std::string(), std::string("-rf"), std::string("a\nb"), zero})
        refusedByBoth.push_back(operation::ResetPermissions{text});
    for (const char* text : {"", "/", "../system/x", "-x"})
        refusedByBoth.push_back(operation::Bootout{text, true});
    for (const auto& text : {std::string(), zero})
        refusedByBoth.push_back(operation::DeleteKeychainItem{text, false});
    const auto refusalOf = [](const RemovalOperation::Kind& kind) {
        const bool namesAPlace = std::holds_alternative<operation::Move>(kind)
                                 || std::holds_alternative<operation::Bootstrap>(kind);
        return namesAPlace ? blockedBySafetyPolicyKey : toolArguments::unsafeArgumentKey;
    };
    std::vector<RemovalOperation> all;
    for (const auto& kind : refusedByBoth) {
        EXPECT_EQ(asUser(kind), OperationResult::failure(7, {refusalOf(kind)})) << kind.index();
        all.push_back(step(static_cast<int>(all.size()) + 1, kind));
    }
    EXPECT_TRUE(log.contains("Move blocked by path policy: /System/Library/x"));
    const RemovalOperation::Kind refusedAsRoot[] = {
        toQuarantine("/Library/Caches/return\rinside"), toQuarantine("/Library/Caches/not UTF-8 \xFF"),
        operation::Bootstrap{Path("/Users/alice/evil.plist"), true},
        operation::Bootstrap{Path("/Library/LaunchDaemons/../../tmp/evil.plist"), true}};
    for (const auto& kind : refusedAsRoot)
        all.push_back(step(static_cast<int>(all.size()) + 1, kind));

    for (const auto& result : asAdministrator(all))
        EXPECT_EQ(result.failureReason,
                  Message{refusalOf(all[static_cast<std::size_t>(result.operationID) - 1].kind)})
            << result.operationID;
    EXPECT_TRUE(log.contains("Privileged move blocked by path policy: /System/Library/x"));
    EXPECT_TRUE(keychain.asked.empty());
    EXPECT_TRUE(tools.calls.empty()) << "a batch of refused operations asks for no password";
}

TEST_F(RunnersTest, ABatchIsOneCallAndAnswersInPlanOrder) {
    volume.makeFolder("/opt/real");
    volume.link("/opt/linked", "real"); // if replaced later, it must not redirect root
    const std::vector<RemovalOperation> operations = {
        step(4, operation::Move{Path("/System/x"), Path(quarantine + "/0004/x")}),
        step(2, toQuarantine("/opt/linked/com.example.app")),
        step(9, operation::Bootout{"com.example.d", true}), step(3, operation::FlushPreferences{})};
    tools.answer = [](const auto&) -> RecordingTools::Answer {
        return ProcessResult{1, "OP 4 OK\rOP 3 OK\rOP 2 FAIL occupied\r", "0:9: execution error: died (9)"};
    };
    const std::vector<OperationResult> expected = {
        OperationResult::failure(4, {blockedBySafetyPolicyKey}),
        OperationResult::failure(2, {"failure.destinationOccupied"}),
        OperationResult::failure(9, {"failure.noResult"}), OperationResult::success(3)};
    EXPECT_EQ(asAdministrator(operations), expected);

    ASSERT_EQ(tools.calls.size(), 1u);
    EXPECT_EQ(tools.calls[0].executable, "/usr/bin/osascript");
    std::vector<RemovalOperation> allowed(operations.begin() + 1, operations.end());
    std::get<operation::Move>(allowed[0].kind).source = Path("/opt/real/com.example.app");
    const auto script = adminBatch::script(allowed, 501);
    EXPECT_EQ(tools.calls[0].arguments, (std::vector<std::string>{"-e", adminBatch::appleScript(script)}));
    EXPECT_EQ(tools.calls[0].timeout, 600s);
}

TEST_F(RunnersTest, ABatchThatGivesNothingFailsEveryOperationAndIsNotAskedAgain) {
    const std::string cancelled = "0:116: execution error: Se cancel\xC3\xB3. (-128)";
    const std::pair<RecordingTools::Answer, Message> cases[] = {
        {ProcessResult{1, "OP 1 OK", cancelled}, {"failure.adminCancelled"}},
        {ProcessResult{0, "", cancelled}, {"failure.noResult"}},
        {ProcessResult{1, "", "0:116: wrong password. (-60007)\n"}, {"failure.adminWrongPassword"}},
        {ProcessResult{1, "", "0:10: No user interaction allowed. (-1713)"}, {"failure.adminNobodyToAsk"}},
        {ProcessResult{1, "", "mv: /Library/Caches/com.example-128.x (-60007): denied (1)"},
         {"failure.noResult"}},
        {RecordingTools::hanging(), {"failure.timedOut"}},
        {RecordingTools::missing(), {"failure.launchFailed %@", {"No such file"}}}};
    std::vector<RemovalOperation> operations = {step(1, operation::FlushPreferences{})};
    for (const auto& testCase : cases) {
        tools.answer = [&](const auto&) { return testCase.first; };
        EXPECT_EQ(asAdministrator(operations).at(0), OperationResult::failure(1, testCase.second));
    }

    // More than fits in one process's arguments is split into batches; a dismissed prompt ends them.
    for (int id = 2; id <= 1500; ++id)
        operations.push_back(step(id, toQuarantine("/Library/Caches/com.example." + std::string(40, 'x'))));
    std::size_t answered = 0;
    tools.calls.clear();
    tools.answer = [&](const auto& call) -> RecordingTools::Answer {
        EXPECT_LT(call.arguments[1].size(), 600'000u);
        if (tools.calls.size() == 2) return ProcessResult{1, "", cancelled};
        std::string output;
        for (; call.arguments[1].find(fmt::format("OP {} ", answered + 1)) != std::string::npos; ++answered)
            output += fmt::format("OP {} OK\r", answered + 1);
        return ProcessResult{0, output, ""};
    };
    const auto results = asAdministrator(operations);
    EXPECT_EQ(tools.calls.size(), 2u);
    ASSERT_EQ(results.size(), operations.size());
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_EQ(results[i].operationID, static_cast<int>(i) + 1);
        EXPECT_EQ(results[i].succeeded, i < answered);
    }
    EXPECT_EQ(results.back().failureReason, Message{"failure.adminCancelled"});
}

} // namespace
} // namespace tidwen
