// The contract of a workspace, for the desktop of the running Mac and for that of the machine with a volume.

#include "base/message.h"
#include "base/path.h"
#include "host/file_manager.h"
#include "operations/tool_workspace.h"
#include "platform/file_system.h"
#include "platform/process_runner.h"
#include "platform/workspace.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/recording_tools.h"
#include "volume/volume_workspace.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace tidwen {
namespace {

using Pane = SystemSettingsLauncher::Pane;

/// A volume presented as the running Mac; `shown` is the item of the last call.
class RunningMacs {
  public:
    explicit RunningMacs(const test::TemporaryVolume& volume) : workspace(volume.files(), tools) {}
    std::string shown() const { return tools.calls.empty() ? "" : tools.calls.back().arguments.back(); }

    static constexpr bool hasSettings = true;
    test::RecordingTools tools;
    ToolWorkspace workspace;
};

class Volumes {
  public:
    explicit Volumes(const test::TemporaryVolume& volume)
        : workspace(volume.files(), volume.hostRoot(),
                    [this](const auto& item) { return revealHere(tools, item); }),
          root_(fileAddress(volume.hostRoot())) {}
    std::string shown() const {
        if (tools.calls.empty()) return "";
        for (const auto& argument : tools.calls.back().arguments)
            if (const auto at = argument.find(root_); at != std::string::npos)
                return argument.substr(at + root_.size(), argument.size() - at - root_.size() - 2);
        return "nothing of the volume";
    }

    static constexpr bool hasSettings = false;
    test::RecordingTools tools;
    VolumeWorkspace workspace;

  private:
    std::string root_;
};

template<class Made>
class WorkspaceContract : public testing::Test {
  protected:
    std::string icon(const char* declared) {
        test::writeBundle(volume, "/A.app", {{"CFBundleIdentifier", "a"}, {"CFBundleIconFile", declared}});
        const auto bytes = made.workspace.iconOf(Path("/A.app"));
        return bytes ? *bytes : std::string(failureKey(bytes.error().fault)).substr(13);
    }

    test::TemporaryVolume volume;
    Made made{volume};
};
using BothWorkspaces = testing::Types<RunningMacs, Volumes>;
TYPED_TEST_SUITE(WorkspaceContract, BothWorkspaces, );

TYPED_TEST(WorkspaceContract, ShowsWhatIsThereAndSaysWhyNot) {
    auto& desktop = this->made;
    this->volume.write("/Applications/A B.app/x", "x");
    this->volume.link("/Applications/Link.app", "A B.app");
    EXPECT_EQ(desktop.workspace.reveal(Path("/Applications/None.app")).error().key, "failure.file.missing");
    EXPECT_EQ(desktop.shown(), "");
    EXPECT_TRUE(desktop.workspace.reveal(Path("/Applications/Link.app")));
    EXPECT_EQ(desktop.shown(), "/Applications/Link.app") << "the link itself";
    desktop.tools.answer = [](const auto&) { return ProcessResult{1, "", "no desktop"}; };
    EXPECT_EQ(desktop.workspace.reveal(Path("/Applications/A B.app")).error(),
              (Message{"failure.exit %@", {"1"}}));
    desktop.tools.answer = [](const auto&) { return test::RecordingTools::missing(); };
    EXPECT_EQ(desktop.workspace.reveal(Path("/Applications")).error().key, "failure.launchFailed %@");
    desktop.tools.answer = {};
    EXPECT_EQ(desktop.workspace.openSettingsPane(Pane::fullDiskAccess).has_value(), desktop.hasSettings);
    if (desktop.hasSettings) {
        EXPECT_EQ(desktop.shown(), SystemSettingsLauncher::address(Pane::fullDiskAccess));
    }
}

TYPED_TEST(WorkspaceContract, ReadsTheIconOfABundleAndNothingElse) {
    const std::string bytes = "icns    picture";
    const auto write = [&](const char* name, std::string_view content) {
        this->volume.write(std::string("/A.app/Contents/Resources/") + name, content);
    };
    write("App.icns", bytes);
    write("2.0.icns", bytes);
    write("Text.icns", "plain text");
    write("Tiny.icns", "icns");
    write("Huge.icns", bytes);
    this->volume.write("/A.app/Contents/Elsewhere.icns", bytes);
    this->volume.write("/Secret.icns", bytes);
    const std::string resources = "/A.app/Contents/Resources/";
    std::filesystem::resize_file(this->volume.host(resources + "Huge.icns"), Workspace::maxIconBytes + 1);
    this->volume.link(resources + "Inside.icns", "App.icns");
    this->volume.link(resources + "Out.icns", "/Secret.icns");
    this->volume.link(resources + "Gone.icns", "nowhere");
    this->volume.makeFolder(resources + "Folder.icns");
    ASSERT_EQ(::mkfifo(this->volume.host(resources + "Pipe.icns").c_str(), 0600), 0);
    const std::pair<const char*, std::string> cases[] = {{"App", bytes},
                                                         {"App.icns", bytes},
                                                         {"App.ICNS", "missing"},
                                                         {"2.0", bytes},
                                                         {"Inside", bytes},
                                                         {"Out", "throughLink"},
                                                         {"Gone", "missing"},
                                                         {"Folder", "notRegular"},
                                                         {"Pipe", "notRegular"},
                                                         {"Huge", "tooLarge"},
                                                         {"Text", "notSupported"},
                                                         {"Tiny", "notSupported"},
                                                         {"../Elsewhere", "missing"},
                                                         {"", "missing"},
                                                         {"..", "missing"}};
    for (const auto& [declared, expected] : cases)
        EXPECT_EQ(this->icon(declared), expected) << declared;

    std::filesystem::rename(this->volume.host("/A.app/Contents/Resources"), this->volume.host("/Moved"));
    this->volume.link("/A.app/Contents/Resources", "/Moved");
    EXPECT_EQ(this->icon("App"), "throughLink");
    EXPECT_EQ(this->made.workspace.iconOf(Path("/None.app")).error().fault, FileFault::missing);
}

TEST(FileAddress, EscapesWhatCouldEndOrLead) {
    EXPECT_EQ(fileAddress("/a'b\"%[]\xff\n é"), "file:///a%27b%22%25%5B%5D%FF%0A%20%C3%A9");
}

} // namespace
} // namespace tidwen
