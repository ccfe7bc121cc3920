// What Tidwen uses of extensions of the Finder; see CoreFoundation.h in the folder beside this one.
#pragma once

#include <AppKit/AppKit.h>

NS_ASSUME_NONNULL_BEGIN

typedef NSUInteger FIMenuKind;
constexpr FIMenuKind FIMenuKindContextualMenuForItems = 0;

@interface FIFinderSyncController : NSObject
+ (instancetype)defaultController;
@property(class, readonly, getter=isExtensionEnabled) BOOL extensionEnabled;
@property(copy, null_resettable) NSSet<NSURL*>* directoryURLs;
- (NSArray<NSURL*>* _Nullable)selectedItemURLs;
@end

@interface FIFinderSync : NSObject
- (instancetype)init;
- (NSMenu* _Nullable)menuForMenuKind:(FIMenuKind)menu;
@end

NS_ASSUME_NONNULL_END
