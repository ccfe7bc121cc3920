#include "base/message.h"
#include "base/path.h"
#include "operations/permission_revoker.h"
#include "operations/tool_launchd.h"
#include "platform/launchd.h"
#include "platform/process_runner.h"
#include "scan/permissions/permission_audit.h"
#include "support/matchers.h"
#include "support/recording_tools.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {
namespace {

using Arguments = std::vector<std::string>;

ProcessResult failing(const std::string& error) {
    return {.exitCode = 1, .standardOutput = {}, .standardError = error};
}

TEST(ToolLaunchd, SwitchesAUsersJobAndIgnoresWhatTheSecondCommandSays) {
    test::RecordingTools tools;
    tools.answer = [](const auto& call) {
        const bool decides = call.arguments[0] == "enable" || call.arguments[0] == "disable";
        return decides ? ProcessResult{} : failing("already loaded");
    };
    ToolLaunchd launchd(tools, 501);
    EXPECT_TRUE(launchd.setEnabled(true, "com.example.job", Path("/Library/LaunchAgents/j.plist"), false));
    EXPECT_TRUE(launchd.setEnabled(false, "com.example.job", Path("/Library/LaunchAgents/j.plist"), false));
    ASSERT_EQ(tools.calls.size(), 4u);
    EXPECT_THAT(tools.calls[0].arguments, ElementsAre("enable", "gui/501/com.example.job"));
    EXPECT_THAT(tools.calls[1].arguments,
                ElementsAre("bootstrap", "gui/501", "/Library/LaunchAgents/j.plist"));
    EXPECT_THAT(tools.calls[2].arguments, ElementsAre("disable", "gui/501/com.example.job"));
    EXPECT_THAT(tools.calls[3].arguments, ElementsAre("bootout", "gui/501/com.example.job"));

    tools.answer = [](const auto&) { return failing(" not permitted \n"); };
    const auto refused = launchd.setEnabled(true, "com.example.job", Path("/x.plist"), false);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, (Message{"startup.toggle.failed %@", {"not permitted"}}));
    EXPECT_EQ(tools.calls.size(), 5u) << "nothing is loaded when the change failed";
}

TEST(ToolLaunchd, SwitchesASystemJobBehindOnePrompt) {
    test::RecordingTools tools;
    ToolLaunchd launchd(tools, 501);
    EXPECT_TRUE(launchd.setEnabled(false, "com.example.it's", Path("/Library/LaunchDaemons/j.plist"), true));
    ASSERT_EQ(tools.calls.size(), 1u);
    EXPECT_EQ(tools.calls[0].executable, "/usr/bin/osascript");
    EXPECT_EQ(tools.calls[0].timeout, std::chrono::seconds(120));
    EXPECT_EQ(
        tools.calls[0].arguments[1],
        R"(do shell script "'/bin/launchctl' 'disable' 'system/com.example.it'\\''s' && { )"
        R"('/bin/launchctl' 'bootout' 'system/com.example.it'\\''s' || true; }" with administrator privileges)");

    tools.answer = [](const auto&) { return failing("0:1: execution error: User canceled. (-128)"); };
    EXPECT_EQ(launchd.setEnabled(true, "a.b", Path("/x.plist"), true).error().kind,
              LaunchdError::Kind::authorizationCancelled);
    tools.calls.clear();
    EXPECT_FALSE(launchd.setEnabled(true, "../../system", Path("/x.plist"), true));
    EXPECT_FALSE(launchd.setEnabled(false, "", Path("/x.plist"), false));
    EXPECT_TRUE(tools.calls.empty()) << "a label with another meaning is never passed to the tool";
}

TEST(ToolPermissionRevoker, AsksTheUsersToolOrAnAdministrator) {
    test::RecordingTools tools;
    ToolPermissionRevoker revoker(tools);
    PermissionGrant grant;
    grant.service = "kTCCServiceCamera";
    EXPECT_TRUE(revoker.revoke(grant, "com.example.app"));
    EXPECT_THAT(tools.calls[0].arguments, ElementsAre("reset", "Camera", "com.example.app"));
    grant.scope = PermissionGrant::Scope::system;
    grant.service = "Odd";
    EXPECT_TRUE(revoker.revoke(grant, "com.example.app"));
    EXPECT_EQ(tools.calls[1].arguments[1], "do shell script \"'/usr/bin/tccutil' 'reset' 'Odd' "
                                           "'com.example.app'\" with administrator privileges");

    tools.answer = [](const auto&) {
        return ProcessResult{.exitCode = 70, .standardOutput = "from output\n", .standardError = ""};
    };
    const auto refused = revoker.revoke(grant, "com.example.app");
    EXPECT_EQ(refused.error().describe(), (Message{"permissions.revoke.failed %@", {"from output"}}));
    tools.answer = [](const auto&) { return failing("(-128)"); };
    EXPECT_EQ(revoker.revoke(grant, "com.example.app").error().describe(), std::nullopt);
    tools.calls.clear();
    EXPECT_FALSE(revoker.revoke(grant, ""));
    grant.service = "kTCCService";
    EXPECT_FALSE(revoker.revoke(grant, "com.example.app"));
    EXPECT_TRUE(tools.calls.empty()) << "an empty argument would extend the reset";
}

} // namespace
} // namespace tidwen
