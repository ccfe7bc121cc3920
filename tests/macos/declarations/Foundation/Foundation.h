// What Tidwen uses of Foundation; see CoreFoundation.h in the folder beside this one.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <objc/NSObject.h>

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

@interface NSString : NSObject
+ (instancetype _Nullable)stringWithUTF8String:(const char* _Nonnull)text;
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
@property(readonly) NSUInteger count;
@end

@interface NSURL : NSObject
@property(readonly) const char* _Nonnull fileSystemRepresentation;
@end
