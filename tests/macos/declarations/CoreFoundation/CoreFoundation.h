// What Tidwen uses of Core Foundation, declared by hand from Apple's documentation, so that the code for
// macOS is compiled on every system. Nothing is ever linked against it; on a Mac the real header is taken.
#pragma once

/// As the real headers say it, so that -Werror sees a deprecated call here, too.
#ifdef __clang__
#define TIDWEN_DEPRECATED(since) __attribute__((availability(macos, introduced = 10.0, deprecated = since)))
#else
#define TIDWEN_DEPRECATED(since)
#endif

using Boolean = unsigned char;
using UInt8 = unsigned char;
using UInt32 = unsigned int;
using OSStatus = int;
using CFIndex = long;
using CFTypeID = unsigned long;
using CFOptionFlags = unsigned long;
using CFTimeInterval = double;
using CFAbsoluteTime = CFTimeInterval;
using CFTypeRef = const void*;
using CFPropertyListRef = CFTypeRef;
using CFAllocatorRef = const struct CFAllocator*;
using CFStringRef = const struct CFString*;
using CFDataRef = const struct CFData*;
using CFArrayRef = const struct CFArray*;
using CFDictionaryRef = const struct CFDictionary*;
using CFBooleanRef = const struct CFBoolean*;
using CFDateRef = const struct CFDate*;
using CFNumberRef = const struct CFNumber*;
struct CFRange {
    CFIndex location;
    CFIndex length;
};
using CFErrorRef = struct CFError*;
using CFBundleRef = struct CFBundle*;

using CFStringEncoding = unsigned int;
constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x08000100;

enum CFPropertyListFormat : CFIndex {
    kCFPropertyListXMLFormat_v1_0 = 100,
    kCFPropertyListBinaryFormat_v1_0 = 200,
};
constexpr CFOptionFlags kCFPropertyListImmutable = 0;
enum CFNumberType : CFIndex { kCFNumberSInt64Type = 4 };

struct CFArrayCallBacks;
struct CFDictionaryKeyCallBacks;
struct CFDictionaryValueCallBacks;

extern "C" {
extern const CFArrayCallBacks kCFTypeArrayCallBacks;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;
extern const CFBooleanRef kCFBooleanTrue;
extern const CFTimeInterval kCFAbsoluteTimeIntervalSince1970;

void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFStringGetTypeID();
CFTypeID CFDataGetTypeID();
CFTypeID CFDateGetTypeID();
CFTypeID CFNumberGetTypeID();
CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);
CFIndex CFStringGetLength(CFStringRef text);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
CFIndex CFStringGetBytes(CFStringRef text, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8* buffer, CFIndex maximum, CFIndex* used);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks* keyCallbacks,
                                   const CFDictionaryValueCallBacks* valueCallbacks);
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);
CFArrayRef CFLocaleCopyPreferredLanguages();
CFBundleRef CFBundleGetMainBundle();
CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);
CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
const UInt8* CFDataGetBytePtr(CFDataRef data);
CFIndex CFDataGetLength(CFDataRef data);
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                         const CFArrayCallBacks* callbacks);
CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef allocator, CFDataRef data,
                                               CFOptionFlags options, CFPropertyListFormat* format,
                                               CFErrorRef* error);
CFDataRef CFPropertyListCreateData(CFAllocatorRef allocator, CFPropertyListRef list,
                                   CFPropertyListFormat format, CFOptionFlags options, CFErrorRef* error);
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID);
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID);
Boolean CFPreferencesAppSynchronize(CFStringRef applicationID);
}
