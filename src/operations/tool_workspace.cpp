#include "operations/tool_workspace.h"

#include "base/message.h"
#include "base/path.h"
#include "operations/tool_paths.h"
#include "platform/file_system.h"
#include "posix/posix_process_runner.h"
#include "scan/applications/bundle_icon.h"

#include <chrono>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

constexpr std::chrono::seconds timeout{10};

} // namespace

Workspace::Result ToolWorkspace::open(const std::vector<std::string>& arguments) {
    const auto result = processes_.run(toolPaths::open, arguments, timeout);
    if (!result) return tl::unexpected(describe(result.error()));
    if (result->exitCode != 0)
        return tl::unexpected(Message{"failure.exit %@", {std::to_string(result->exitCode)}});
    return {};
}

Workspace::Result ToolWorkspace::reveal(const Path& item) {
    if (const auto info = files_.info(item); !info)
        return tl::unexpected(Message{std::string(failureKey(info.error().fault))});
    return open({"-R", item.string()}); // absolute, so never an option
}

Workspace::Result ToolWorkspace::openSettingsPane(SystemSettingsLauncher::Pane pane) {
    return open({std::string(SystemSettingsLauncher::address(pane))});
}

FileResult<std::string> ToolWorkspace::iconOf(const Path& bundle) const {
    return readBundleIcon(files_, bundle);
}

} // namespace tidwen
