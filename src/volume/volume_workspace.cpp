#include "volume/volume_workspace.h"

#include "base/message.h"
#include "base/path.h"
#include "platform/file_system.h"
#include "scan/applications/bundle_icon.h"

#include <string>
#include <tl/expected.hpp>

namespace tidwen {

Workspace::Result VolumeWorkspace::reveal(const Path& item) {
    // A link on the volume names a path of the volume; this machine would resolve it to its own.
    const auto place = files_.resolveParent(item);
    const auto info = place ? files_.info(*place) : tl::unexpected(place.error());
    if (!info) return tl::unexpected(Message{std::string(failureKey(info.error().fault))});
    return revealHere_(folder_ / place->string().substr(1));
}

Workspace::Result VolumeWorkspace::openSettingsPane(SystemSettingsLauncher::Pane) {
    return tl::unexpected(Message{"failure.settingsOfRunningMac"});
}

FileResult<std::string> VolumeWorkspace::iconOf(const Path& bundle) const {
    return readBundleIcon(files_, bundle);
}

} // namespace tidwen
