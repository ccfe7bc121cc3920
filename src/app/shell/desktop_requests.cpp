#include "app/shell/desktop_requests.h"

#include "app/widgets/words.h"
#include "base/background_step.h"

namespace tidwen {

void DesktopRequests::reveal(const Path& item) {
    ask([item](Workspace& workspace) { return workspace.reveal(item); });
}

void DesktopRequests::openPane(SystemSettingsLauncher::Pane pane) {
    ask([pane](Workspace& workspace) { return workspace.openSettingsPane(pane); });
}

void DesktopRequests::ask(const std::function<Workspace::Result(Workspace&)>& request) {
    inBackground(
        *this, alive_, mac_.session().background(), mac_.loop(),
        [&workspace = mac_.system().workspace, request] { return request(workspace); },
        [](const DesktopRequests& self, const Workspace::Result& result) {
            if (!result) self.say_(shown(self.mac_.system().texts.text(result.error())));
        });
}

} // namespace tidwen
