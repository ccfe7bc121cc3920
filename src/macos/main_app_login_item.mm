#include "macos/main_app_login_item.h"

#include "macos/foundation_text.h"

#import <ServiceManagement/ServiceManagement.h>

namespace tidwen {

bool MainAppLoginItem::isEnabled() const {
    return SMAppService.mainAppService.status == SMAppServiceStatusEnabled;
}

bool MainAppLoginItem::setEnabled(bool enabled) {
    @autoreleasepool {
        SMAppService* const service = SMAppService.mainAppService;
        const auto before = service.status;
        if (!enabled && (before == SMAppServiceStatusNotRegistered || before == SMAppServiceStatusNotFound))
            return true;
        NSError* error = nil;
        const BOOL isDone =
            enabled ? [service registerAndReturnError:&error] : [service unregisterAndReturnError:&error];
        if (!isDone && error) log_.warning("Start at login: {}", textOf(error.localizedDescription));
        // What counts is how it stands now: an item that is registered may wait for the user's consent.
        if (enabled && service.status == SMAppServiceStatusRequiresApproval)
            [SMAppService openSystemSettingsLoginItems];
        return isEnabled() == enabled;
    }
}

} // namespace tidwen
