#include "base/message.h"
#include "base/path.h"
#include "host/application_login_item.h"
#include "host/desktop_notifications.h"
#include "host/exclusive_login_item.h"
#include "host/launch_agent.h"
#include "host/running_user.h"
#include "host/script_notifications.h"
#include "host/xdg_autostart.h"
#include "operations/tool_launchd.h"
#include "platform/login_item.h"
#include "platform/notifications.h"
#include "platform/process_runner.h"
#include "support/fixtures.h"
#include "support/recording_tools.h"
#include "support/temporary_folder.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

TEST(XdgAutostart, QuotesWhatTheEntryWouldReadAsSomethingElse) {
    const struct {
        const char *argument, *written;
    } cases[] = {
        {"/opt/tidwen", R"("/opt/tidwen")"}, {"a b", R"("a b")"},       {"50%", R"("50%%")"},
        {"say \"hi\"", R"("say \\"hi\\"")"}, {"$HOME", R"("\\$HOME")"}, {"back\\slash", R"("back\\\\slash")"},
    };
    for (const auto& c : cases)
        EXPECT_NE(autostartEntry({c.argument}).find(std::string("\nExec=") + c.written + "\n"),
                  std::string::npos)
            << autostartEntry({c.argument});
}

/// `switchedOff`: how the system's own settings disable an entry.
void expectToSwitch(LoginItem& item, const std::filesystem::path& entry,
                    const std::function<void()>& switchedOff) {
    namespace fs = std::filesystem;
    EXPECT_FALSE(item.isEnabled());
    EXPECT_TRUE(item.setEnabled(false)) << "already off";
    EXPECT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.isEnabled());
    const auto writeOften = [&item] {
        for (int i = 0; i < 20; ++i)
            EXPECT_TRUE(item.setEnabled(true)); // one of two concurrent processes
    };
    std::thread other(writeOften);
    writeOften();
    other.join();
    switchedOff();
    EXPECT_FALSE(item.isEnabled());

    const auto mine = entry.parent_path().parent_path() / "mine";
    std::ofstream(mine) << "mine";
    fs::remove(entry);
    fs::create_symlink(mine, entry);
    EXPECT_TRUE(item.setEnabled(true));
    EXPECT_FALSE(fs::is_symlink(entry)) << "a link is replaced, not written through";
    EXPECT_EQ(fs::file_size(mine), 4u);
    EXPECT_TRUE(item.setEnabled(false));
    EXPECT_TRUE(fs::is_empty(entry.parent_path()));
}

template<class Make>
void expectToRefuse(const std::filesystem::path& folder, const test::RecordingLog& log, const Make& make) {
    for (const auto* broken : {"/opt/tidwen\x01", "/opt/\xff"}) {
        EXPECT_FALSE(make(folder, broken).setEnabled(true));
        EXPECT_TRUE(log.contains("cannot stand in it"));
    }
    std::ofstream(folder / "file");
    EXPECT_FALSE(make(folder / "file/entries", "/opt/tidwen").setEnabled(true));
    EXPECT_TRUE(log.contains("file/entries"));
}

TEST(LoginItems, SwitchOnAndOff) {
    const test::TemporaryFolder folder;
    test::RecordingLog log;
    const std::vector<std::string> command = {"/opt/tidwen", "watch"};
    const auto entry = folder.path() / "autostart/com.corvella.tidwen.desktop";
    XdgAutostart autostart(entry.parent_path(), command, log);
    for (const auto* off : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"})
        expectToSwitch(autostart, entry, [&] { std::ofstream(entry, std::ios::app) << off; });
    const auto file = folder.path() / "LaunchAgents/com.corvella.tidwen.watch.plist";
    test::RecordingTools tools;
    ToolLaunchd launchd(tools, 501);
    LaunchAgent agent(file.parent_path(), command, log, launchd);
    expectToSwitch(agent, file, [&] {
        std::ofstream(file) << "<plist version=\"1.0\"><dict><key>Disabled</key><true/></dict></plist>";
    });
    std::atomic<bool> isSwitchedOff = false;
    tools.answer = [&](const auto& call) {
        EXPECT_EQ(call.arguments[1].rfind("gui/501", 0), 0u);
        if (call.arguments[0] == "enable") isSwitchedOff = false;
        return ProcessResult{0, isSwitchedOff ? "\t\"com.corvella.tidwen.watch\" => disabled\n" : "", ""};
    };
    expectToSwitch(agent, file, [&] { isSwitchedOff = true; });
    expectToRefuse(folder.path(), log, [&](const auto& place, const std::string& program) {
        return XdgAutostart(place, {program}, log);
    });
    expectToRefuse(folder.path(), log, [&](const auto& place, const std::string& program) {
        return LaunchAgent(place, {program}, log, launchd);
    });
}

class FakeLoginItem : public LoginItem {
  public:
    explicit FakeLoginItem(bool& on) : on_(on) {}
    bool isEnabled() const override { return on_; }
    bool setEnabled(bool enabled) override {
        on_ = enabled;
        return true;
    }

  private:
    bool& on_;
};

/// The terminal's part asks the application's through a second start of its main program.
TEST(LoginItems, OfTheApplicationAndTheTerminalExcludeEachOther) {
    using enum ExclusiveLoginItem::Program;
    const struct {
        ExclusiveLoginItem::Program self;
        bool application, agent, wanted, applicationThen, agentThen;
    } cases[] = {
        {application, false, true, true, true, false},  {application, true, true, true, true, false},
        {application, true, true, false, false, false}, {application, false, true, false, false, false},
        {terminal, false, false, true, false, true},    {terminal, true, false, true, true, false},
        {terminal, true, true, true, true, false},      {terminal, true, true, false, false, false},
    };
    for (const auto& c : cases) {
        bool isApplicationOn = c.application, isAgentOn = c.agent;
        test::RecordingTools tools;
        tools.answer = [&](const test::RecordingTools::Call& call) {
            FakeLoginItem own(isApplicationOn);
            const char* words[] = {call.executable.c_str(), call.arguments[0].c_str(),
                                   call.arguments[1].c_str()};
            return ProcessResult{*answerAboutLoginItem(own, 3, words), "", ""};
        };
        ExclusiveLoginItem item(std::make_unique<ApplicationLoginItem>(tools, "/Tidwen"),
                                std::make_unique<FakeLoginItem>(isAgentOn), c.self);
        EXPECT_EQ(item.isEnabled(), c.application || c.agent);
        EXPECT_EQ(item.startsAnother(), c.self == application ? c.agent : c.application);
        EXPECT_TRUE(item.setEnabled(c.wanted));
        EXPECT_EQ(std::pair(isApplicationOn, isAgentOn), std::pair(c.applicationThen, c.agentThen));
    }
    test::RecordingTools gone;
    gone.answer = [](const auto&) { return test::RecordingTools::missing(); };
    EXPECT_FALSE(ApplicationLoginItem(gone, "/Tidwen").isEnabled());
    bool isOn = false;
    FakeLoginItem item(isOn);
    const char* words[] = {"Tidwen", "--volume", "on"};
    EXPECT_EQ(answerAboutLoginItem(item, 3, words), std::nullopt) << "an ordinary start";

    const test::TemporaryFolder folder;
    const auto contents = folder.path() / "Tidwen.app/Contents";
    EXPECT_EQ(mainProgramBeside(contents / "Helpers/tidwen"), std::nullopt);
    std::filesystem::create_directories(contents / "MacOS");
    std::ofstream(contents / "MacOS/Tidwen") << "x";
    EXPECT_EQ(mainProgramBeside(contents / "Helpers/tidwen"), contents / "MacOS/Tidwen");
    EXPECT_EQ(mainProgramBeside("/usr/bin/tidwen"), std::nullopt);
}

TEST(RunningUser, IsTheAccountsAndNeverRoot) {
    const std::string folder = "/var/folders/zz/x";
    const auto user = runningUser({501, 501, "/Users/alice", folder + "/C/", folder + "/T/"});
    ASSERT_TRUE(user);
    EXPECT_EQ(user->home, Path("/Users/alice"));
    EXPECT_EQ(user->userID, 501u);
    EXPECT_EQ(user->cacheFolder, Path("/private" + folder + "/C"));
    EXPECT_EQ(user->temporaryFolder, Path("/private" + folder + "/T"));
    for (const char* unusable : {"", "relative/C", "/var/\xff/C"})
        EXPECT_EQ(runningUser({501, 501, "/Users/alice", unusable})->cacheFolder, std::nullopt) << unusable;
    const test::TemporaryFolder disk;
    const auto linked = disk.path() / "linked", carol = disk.path() / "carol";
    std::filesystem::create_directory(carol);
    std::filesystem::create_symlink(carol, linked);
    EXPECT_THAT(
        runningUser({.realID = 501,
                     .effectiveID = 501,
                     .home = "/Users/alice",
                     .personsHomes = {"/Users/alice", "/Users/bob", "/Users/bob/", "", "/", linked.string()}})
            ->otherHomes,
        testing::ElementsAre(Path("/Users/bob"), Path(linked.string()), Path(carol.string())));
    const std::tuple<ProcessAccount, const char*> refused[] = {
        {{0, 0, "/var/root"}, "running.root"},      {{501, 0, "/Users/alice"}, "running.root"},
        {{0, 501, "/Users/alice"}, "running.root"}, {{501, 501, ""}, "running.noHome"},
        {{501, 501, "/"}, "running.noHome"},
    };
    for (const auto& [account, reason] : refused)
        EXPECT_EQ(runningUser(account).error(), Message{reason});
}

TEST(ScriptNotifications, HandANameOverAsAWordAlone) {
    test::RecordingTools tools;
    EXPECT_TRUE(ScriptNotifications(tools).post({.identifier = "x", .title = "-e \"\x1b", .body = "b"}));
    const auto& words = tools.calls.back().arguments;
    ASSERT_EQ(words.size(), 9u);
    EXPECT_THAT(words[3], testing::Not(testing::HasSubstr("-e \"")));
    EXPECT_EQ(words[6], "tidwen") << "ends the options";
    EXPECT_THAT(words[7],
                testing::AllOf(testing::StartsWith("-e \""), testing::Not(testing::HasSubstr("\x1b"))));
    tools.answer = [](const auto&) { return ProcessResult{1, "", ""}; };
    EXPECT_FALSE(ScriptNotifications(tools).post({.identifier = "x", .title = "t", .body = "b"}));
}

TEST(DesktopNotifications, AreUnavailableWithoutTheToolAndNeverReadANameAsAnOption) {
    test::RecordingTools tools;
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere", 1);
    DesktopNotifications missing(tools, "/nowhere/notify-send");
    EXPECT_EQ(missing.state(), NotificationState::unavailable);
    EXPECT_FALSE(missing.post({.identifier = "x", .title = "t", .body = "b"}));
    EXPECT_TRUE(tools.calls.empty());

    DesktopNotifications present(tools, "/bin/sh"); // any program that can be run
    EXPECT_TRUE(present.post({.identifier = "x", .title = "--help\x1b", .body = "<b>&"}));
    ASSERT_EQ(tools.calls.size(), 1u);
    const auto& arguments = tools.calls[0].arguments;
    EXPECT_EQ(arguments[1], "--");
    EXPECT_EQ(arguments[2].find('\x1b'), std::string::npos);
    EXPECT_EQ(arguments[3], "&lt;b>&amp;");
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    EXPECT_EQ(present.state(), NotificationState::unavailable);
}

} // namespace
} // namespace tidwen
