#include "macos/launch_reason.h"

#import <AppKit/AppKit.h>

#include <memory>
#include <utility>

namespace tidwen {

namespace {

/// The event that opens the program says it, and is there only while the launch ends.
bool isLoginLaunch() {
    NSAppleEventDescriptor* const event = NSAppleEventManager.sharedAppleEventManager.currentAppleEvent;
    return event.eventID == kAEOpenApplication &&
           [event paramDescriptorForKeyword:keyAEPropData].enumCodeValue == keyAELaunchedAsLogInItem;
}

} // namespace

void whenLaunched(std::function<void(bool isLogin)> told) {
    const auto once = std::make_shared<std::function<void(bool)>>(std::move(told));
    [NSNotificationCenter.defaultCenter addObserverForName:NSApplicationDidFinishLaunchingNotification
                                                    object:nil
                                                     queue:nil
                                                usingBlock:^(NSNotification* __unused notification) {
                                                  if (const auto answer = std::exchange(*once, {}))
                                                      answer(isLoginLaunch());
                                                }];
}

} // namespace tidwen
