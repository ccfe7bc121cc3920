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

typedef NSUInteger NSApplicationTerminateReply;
constexpr NSApplicationTerminateReply NSTerminateCancel = 0;

typedef NSString* NSAppearanceName;

extern "C" {
extern NSString* _Nonnull const NSApplicationDidFinishLaunchingNotification;
extern NSAppearanceName _Nonnull const NSAppearanceNameAqua;
extern NSAppearanceName _Nonnull const NSAppearanceNameDarkAqua;
}

@interface NSAppearance : NSObject
+ (NSAppearance* _Nullable)appearanceNamed:(NSAppearanceName _Nonnull)name;
@end

@class NSApplication;
@protocol NSApplicationDelegate
@optional
- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication* _Nonnull)sender;
@end

@interface NSApplication : NSObject
@property(class, readonly, strong) NSApplication* _Nonnull sharedApplication;
@property(weak, nullable) id<NSApplicationDelegate> delegate;
@property(strong, nullable) id servicesProvider;
@property(nullable, strong) NSAppearance* appearance;
- (void)run;
@end

@interface NSPasteboard : NSObject
- (NSArray* _Nullable)readObjectsForClasses:(NSArray<Class>* _Nonnull)classes
                                    options:(NSDictionary<NSString*, id>* _Nullable)options;
@end

@interface NSMenu : NSObject
- (instancetype _Nonnull)initWithTitle:(NSString* _Nonnull)title;
- (id _Nonnull)addItemWithTitle:(NSString* _Nonnull)title
                         action:(SEL _Nullable)action
                  keyEquivalent:(NSString* _Nonnull)keys;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* _Nonnull sharedWorkspace;
- (BOOL)openURL:(NSURL* _Nonnull)url;
- (NSArray<NSURL*>* _Nonnull)URLsForApplicationsWithBundleIdentifier:(NSString* _Nonnull)bundleIdentifier;
@end
