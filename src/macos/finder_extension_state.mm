#include "macos/finder_extension_state.h"

#include "macos/main_bundle.h"

#import <FinderSync/FinderSync.h>

namespace tidwen {

bool isFinderExtensionEnabled() {
    return isMainProgramOfBundle() && FIFinderSyncController.isExtensionEnabled;
}

} // namespace tidwen
