#include "macos/main_bundle.h"

#include <CoreFoundation/CoreFoundation.h>

namespace tidwen {

bool isMainProgramOfBundle() {
    auto* const bundle = CFBundleGetMainBundle();
    return bundle && CFBundleGetIdentifier(bundle);
}

} // namespace tidwen
