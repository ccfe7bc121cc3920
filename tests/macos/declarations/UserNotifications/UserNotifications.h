// What Tidwen uses of user notifications; see CoreFoundation.h in the folder beside this one.
#pragma once

#include <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

extern "C" {
extern NSString* const UNNotificationDefaultActionIdentifier;
}

typedef NSUInteger UNNotificationPresentationOptions;
constexpr UNNotificationPresentationOptions UNNotificationPresentationOptionList = 1 << 3,
                                            UNNotificationPresentationOptionBanner = 1 << 4;
typedef NSUInteger UNAuthorizationOptions;
constexpr UNAuthorizationOptions UNAuthorizationOptionSound = 1 << 1, UNAuthorizationOptionAlert = 1 << 2;
typedef NSInteger UNAuthorizationStatus;
constexpr UNAuthorizationStatus UNAuthorizationStatusNotDetermined = 0, UNAuthorizationStatusDenied = 1;
typedef NSUInteger UNNotificationActionOptions;
constexpr UNNotificationActionOptions UNNotificationActionOptionForeground = 1 << 2;
typedef NSUInteger UNNotificationCategoryOptions;
constexpr UNNotificationCategoryOptions UNNotificationCategoryOptionNone = 0;

@interface UNNotificationContent : NSObject
@property(readonly, copy) NSDictionary* userInfo;
@end

@interface UNMutableNotificationContent : UNNotificationContent
@property(copy) NSString* title;
@property(copy) NSString* body;
@property(copy) NSString* categoryIdentifier;
@property(copy) NSDictionary* userInfo;
@end

@interface UNNotificationTrigger : NSObject
@end

@interface UNNotificationRequest : NSObject
+ (instancetype)requestWithIdentifier:(NSString*)identifier
                              content:(UNNotificationContent*)content
                              trigger:(UNNotificationTrigger* _Nullable)trigger;
@property(readonly, copy) UNNotificationContent* content;
@end

@interface UNNotification : NSObject
@property(readonly, copy) UNNotificationRequest* request;
@end

@interface UNNotificationResponse : NSObject
@property(readonly, copy) UNNotification* notification;
@property(readonly, copy) NSString* actionIdentifier;
@end

@interface UNNotificationAction : NSObject
+ (instancetype)actionWithIdentifier:(NSString*)identifier
                               title:(NSString*)title
                             options:(UNNotificationActionOptions)options;
@end

@interface UNNotificationCategory : NSObject
+ (instancetype)categoryWithIdentifier:(NSString*)identifier
                               actions:(NSArray<UNNotificationAction*>*)actions
                     intentIdentifiers:(NSArray<NSString*>*)intentIdentifiers
                               options:(UNNotificationCategoryOptions)options;
@end

@interface UNNotificationSettings : NSObject
@property(readonly) UNAuthorizationStatus authorizationStatus;
@end

@class UNUserNotificationCenter;
@protocol UNUserNotificationCenterDelegate
@optional
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions))completionHandler;
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completionHandler;
@end

@interface UNUserNotificationCenter : NSObject
+ (UNUserNotificationCenter*)currentNotificationCenter;
@property(weak, nullable) id<UNUserNotificationCenterDelegate> delegate;
- (void)getNotificationSettingsWithCompletionHandler:(void (^)(UNNotificationSettings*))completionHandler;
- (void)requestAuthorizationWithOptions:(UNAuthorizationOptions)options
                      completionHandler:(void (^)(BOOL granted, NSError* _Nullable error))completionHandler;
- (void)setNotificationCategories:(NSSet<UNNotificationCategory*>*)categories;
- (void)addNotificationRequest:(UNNotificationRequest*)request
         withCompletionHandler:(void (^_Nullable)(NSError* _Nullable error))completionHandler;
@end

NS_ASSUME_NONNULL_END
