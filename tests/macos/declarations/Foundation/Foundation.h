// What Tidwen uses of Foundation; see CoreFoundation.h in the folder beside this one.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <objc/NSObject.h>

#define NS_ASSUME_NONNULL_BEGIN _Pragma("clang assume_nonnull begin")
#define NS_ASSUME_NONNULL_END _Pragma("clang assume_nonnull end")

typedef struct {
    unsigned long state;
    id __unsafe_unretained _Nullable* _Nullable itemsPtr;
    unsigned long* _Nullable mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState* _Nonnull)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)length;
@end

NS_ASSUME_NONNULL_BEGIN

@class NSURL;

@interface NSString : NSObject
+ (instancetype _Nullable)stringWithUTF8String:(const char*)text;
@property(readonly) const char* _Nullable UTF8String;
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
+ (instancetype)array;
+ (instancetype)arrayWithObject:(ObjectType)object;
@property(readonly) NSUInteger count;
@end

@interface NSSet<__covariant ObjectType> : NSObject <NSFastEnumeration>
+ (instancetype)setWithObject:(ObjectType)object;
@end

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSFastEnumeration>
- (ObjectType _Nullable)objectForKey:(KeyType)key;
@end

@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary <KeyType, ObjectType>
- (void)setObject:(ObjectType)object forKey:(KeyType)key;
@end

@interface NSError : NSObject
@property(readonly, copy) NSString* localizedDescription;
@end

@interface NSURL : NSObject
+ (instancetype)fileURLWithPath:(NSString*)path isDirectory:(BOOL)isDirectory;
@property(readonly) const char* fileSystemRepresentation;
@property(readonly, getter=isFileURL) BOOL fileURL;
@property(nullable, readonly, copy) NSURL* URLByDeletingLastPathComponent;
@end

@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(readonly, copy, nullable) NSString* bundleIdentifier;
@property(readonly, copy) NSURL* bundleURL;
- (id _Nullable)objectForInfoDictionaryKey:(NSString*)key;
- (NSString*)localizedStringForKey:(NSString*)key
                             value:(NSString* _Nullable)value
                             table:(NSString* _Nullable)table;
@end

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
- (NSURL* _Nullable)containerURLForSecurityApplicationGroupIdentifier:(NSString*)group;
@end

@interface NSNotification : NSObject
@end

@interface NSOperationQueue : NSObject
@end

@interface NSNotificationCenter : NSObject
@property(class, readonly, strong) NSNotificationCenter* defaultCenter;
- (id)addObserverForName:(NSString* _Nullable)name
                  object:(id _Nullable)object
                   queue:(NSOperationQueue* _Nullable)queue
              usingBlock:(void (^)(NSNotification*))block;
@end

// Apple events.
typedef UInt32 FourCharCode;
constexpr FourCharCode kAEOpenApplication = 'oapp', keyAEPropData = 'prdt', keyAELaunchedAsLogInItem = 'lgit';

@interface NSAppleEventDescriptor : NSObject
@property(readonly) FourCharCode eventID;
@property(readonly) FourCharCode enumCodeValue;
- (NSAppleEventDescriptor* _Nullable)paramDescriptorForKeyword:(FourCharCode)keyword;
@end

@interface NSAppleEventManager : NSObject
+ (NSAppleEventManager*)sharedAppleEventManager;
@property(nullable, readonly, strong) NSAppleEventDescriptor* currentAppleEvent;
@end

NS_ASSUME_NONNULL_END
