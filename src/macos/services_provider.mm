#include "macos/services_provider.h"

#import <AppKit/AppKit.h>

@interface TidwenServices : NSObject
@property(nonatomic) std::function<void(const std::vector<tidwen::Path>&)> serve;
- (void)uninstallWithTidwen:(NSPasteboard*)board
                   userData:(NSString*)userData
                      error:(NSString* __autoreleasing*)error;
@end

@implementation TidwenServices
- (void)uninstallWithTidwen:(NSPasteboard*)board
                   userData:(NSString*)__unused userData
                      error:(NSString* __autoreleasing*)__unused error {
    std::vector<tidwen::Path> selection;
    for (id each in [board readObjectsForClasses:[NSArray arrayWithObject:[NSURL class]] options:nil])
        if ([each isKindOfClass:[NSURL class]] && ((NSURL*)each).isFileURL)
            selection.emplace_back(((NSURL*)each).fileSystemRepresentation);
    if (self.serve) self.serve(selection);
}
@end

namespace tidwen {

struct ServicesProvider::Parts {
    TidwenServices* services = [[TidwenServices alloc] init];
};

ServicesProvider::ServicesProvider(Serve serve) : parts_(std::make_unique<Parts>()) {
    parts_->services.serve = std::move(serve);
    NSApplication.sharedApplication.servicesProvider = parts_->services;
}

ServicesProvider::~ServicesProvider() {
    NSApplication.sharedApplication.servicesProvider = nil;
}

} // namespace tidwen
