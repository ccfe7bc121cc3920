// An application that does nothing. It lets itself be quit, unless its first argument is "stays"; it ends by
// itself after half a minute.

#import <AppKit/AppKit.h>

#include <string_view>
#include <unistd.h>

@interface StayingDelegate : NSObject <NSApplicationDelegate>
@end

@implementation StayingDelegate
- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)__unused sender {
    return NSTerminateCancel;
}
@end

int main(int count, char** words) {
    @autoreleasepool {
        ::alarm(30);
        StayingDelegate* const delegate = [[StayingDelegate alloc] init];
        if (count > 1 && std::string_view(words[1]) == "stays")
            NSApplication.sharedApplication.delegate = delegate;
        [NSApplication.sharedApplication run];
    }
    return 0;
}
