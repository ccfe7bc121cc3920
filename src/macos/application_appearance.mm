#include "macos/application_appearance.h"

#import <AppKit/AppKit.h>

namespace tidwen {

void setApplicationAppearance(ShownAppearance appearance) {
    NSAppearance* own = nil; // the desktop's
    if (appearance == ShownAppearance::light) own = [NSAppearance appearanceNamed:NSAppearanceNameAqua];
    if (appearance == ShownAppearance::dark) own = [NSAppearance appearanceNamed:NSAppearanceNameDarkAqua];
    NSApplication.sharedApplication.appearance = own;
}

} // namespace tidwen
