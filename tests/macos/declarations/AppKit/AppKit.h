// What Tidwen uses of AppKit; see CoreFoundation.h in the folder beside this one.
#pragma once

#include <Foundation/Foundation.h>
#include <sys/types.h>

@interface NSRunningApplication : NSObject
+ (NSArray<NSRunningApplication*>* _Nonnull)runningApplicationsWithBundleIdentifier:
    (NSString* _Nonnull)bundleIdentifier;
@property(readonly) pid_t processIdentifier;
- (BOOL)terminate;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* _Nonnull sharedWorkspace;
- (NSURL* _Nullable)URLForApplicationWithBundleIdentifier:(NSString* _Nonnull)bundleIdentifier;
@end
