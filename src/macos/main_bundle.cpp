#include "macos/main_bundle.h"

#include <CoreFoundation/CoreFoundation.h>

namespace tidwen {

bool isMainProgramOfBundle() {
    auto* const bundle = CFBundleGetMainBundle();
    const auto* const identifier = bundle ? CFBundleGetIdentifier(bundle) : nullptr;
    return identifier && CFStringGetLength(identifier) > 0;
}

} // namespace tidwen
