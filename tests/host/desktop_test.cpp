#include "host/desktop_notifications.h"
#include "host/xdg_autostart.h"
#include "support/fixtures.h"
#include "support/recording_tools.h"
#include "support/temporary_folder.h"

#include <fstream>
#include <gmock/gmock.h>

namespace tidwen {
namespace {

TEST(XdgAutostart, QuotesWhatTheEntryWouldReadAsSomethingElse) {
    struct Case {
        const char *argument, *written;
    };
    const Case cases[] = {
        {"/opt/tidwen", R"("/opt/tidwen")"}, {"a b", R"("a b")"},       {"50%", R"("50%%")"},
        {"say \"hi\"", R"("say \\"hi\\"")"}, {"$HOME", R"("\\$HOME")"}, {"back\\slash", R"("back\\\\slash")"},
    };
    for (const auto& c : cases)
        EXPECT_NE(autostartEntry({c.argument}).find(std::string("\nExec=") + c.written + "\n"),
                  std::string::npos)
            << autostartEntry({c.argument});
}

TEST(XdgAutostart, SwitchesOnAndOff) {
    namespace fs = std::filesystem;
    const test::TemporaryFolder folder;
    test::RecordingLog log;
    const auto configuration = folder.path() / "config";
    XdgAutostart item(configuration / "autostart", {"/opt/tidwen", "watch"}, log);
    EXPECT_FALSE(item.isEnabled());
    EXPECT_TRUE(item.setEnabled(false)) << "off already";
    EXPECT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.isEnabled());
    const auto entry = configuration / "autostart/com.corvella.tidwen.desktop";
    std::ofstream(entry, std::ios::app) << "Hidden=true\n"; // as the desktop's own settings switch it off
    EXPECT_FALSE(item.isEnabled());

    std::ofstream(folder.path() / "mine") << "mine";
    fs::remove(entry);
    fs::create_symlink(folder.path() / "mine", entry);
    EXPECT_TRUE(item.setEnabled(true));
    EXPECT_FALSE(fs::is_symlink(entry)) << "a link is replaced, not written through";
    EXPECT_EQ(fs::file_size(folder.path() / "mine"), 4u);
    EXPECT_TRUE(item.setEnabled(false));
    EXPECT_TRUE(fs::is_empty(configuration / "autostart"));

    for (const auto* broken : {"/opt/tidwen\nExec=evil", "/opt/\xff"}) {
        EXPECT_FALSE(XdgAutostart(folder.path(), {broken}, log).setEnabled(true));
        EXPECT_TRUE(log.contains("cannot stand in it"));
    }
    std::ofstream(folder.path() / "file");
    EXPECT_FALSE(XdgAutostart(folder.path() / "file/autostart", {"/opt/tidwen"}, log).setEnabled(true));
    EXPECT_TRUE(log.contains("file/autostart"));
}

TEST(DesktopNotifications, AreUnavailableWithoutTheToolAndNeverReadANameAsAnOption) {
    test::RecordingTools tools;
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere", 1);
    DesktopNotifications missing(tools, "/nowhere/notify-send");
    EXPECT_EQ(missing.state(), NotificationState::unavailable);
    EXPECT_FALSE(missing.post({.identifier = "x", .title = "t", .body = "b"}));
    EXPECT_TRUE(tools.calls.empty());

    DesktopNotifications present(tools, "/bin/sh"); // anything that may be started
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
