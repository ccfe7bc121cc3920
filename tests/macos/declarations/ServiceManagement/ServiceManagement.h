// What Tidwen uses of the service management; see CoreFoundation.h in the folder beside this one.
#pragma once

#include <Foundation/Foundation.h>

typedef NSInteger SMAppServiceStatus;
constexpr SMAppServiceStatus SMAppServiceStatusNotRegistered = 0, SMAppServiceStatusEnabled = 1,
                             SMAppServiceStatusRequiresApproval = 2, SMAppServiceStatusNotFound = 3;

@interface SMAppService : NSObject
@property(class, readonly) SMAppService* _Nonnull mainAppService;
@property(readonly) SMAppServiceStatus status;
- (BOOL)registerAndReturnError:(NSError* _Nullable __autoreleasing* _Nullable)error;
- (BOOL)unregisterAndReturnError:(NSError* _Nullable __autoreleasing* _Nullable)error;
+ (void)openSystemSettingsLoginItems;
@end
