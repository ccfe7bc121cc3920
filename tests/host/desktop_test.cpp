#include "host/desktop_notifications.h"
#include "host/launch_agent.h"
#include "host/xdg_autostart.h"
#include "support/fixtures.h"
#include "support/recording_tools.h"
#include "support/temporary_folder.h"

#include <fstream>
#include <gmock/gmock.h>
#include <thread>

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

template<class Item>
void expectToRefuse(const std::filesystem::path& folder) {
    test::RecordingLog log;
    for (const auto* broken : {"/opt/tidwen\x01", "/opt/\xff"}) {
        EXPECT_FALSE(Item(folder, {broken}, log).setEnabled(true));
        EXPECT_TRUE(log.contains("cannot stand in it"));
    }
    std::ofstream(folder / "file");
    EXPECT_FALSE(Item(folder / "file/entries", {"/opt/tidwen"}, log).setEnabled(true));
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
    LaunchAgent agent(file.parent_path(), command, log);
    expectToSwitch(agent, file, [&] {
        std::ofstream(file) << "<plist version=\"1.0\"><dict><key>Disabled</key><true/></dict></plist>";
    });
    expectToRefuse<XdgAutostart>(folder.path());
    expectToRefuse<LaunchAgent>(folder.path());
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
