// What Tidwen uses of Core Foundation, declared by hand from Apple's documentation, so that the code for
// macOS is compiled on every system. Nothing is ever linked against it; on a Mac the real header is taken.
#pragma once

using Boolean = unsigned char;
using UInt8 = unsigned char;
using CFIndex = long;
using CFOptionFlags = unsigned long;
using CFTimeInterval = double;
using CFTypeRef = const void*;
using CFPropertyListRef = CFTypeRef;
using CFAllocatorRef = const struct CFAllocator*;
using CFStringRef = const struct CFString*;
using CFDataRef = const struct CFData*;
using CFArrayRef = const struct CFArray*;
using CFErrorRef = struct CFError*;

using CFStringEncoding = unsigned int;
constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x08000100;

enum CFPropertyListFormat : CFIndex {
    kCFPropertyListXMLFormat_v1_0 = 100,
    kCFPropertyListBinaryFormat_v1_0 = 200,
};
constexpr CFOptionFlags kCFPropertyListImmutable = 0;

struct CFArrayCallBacks;

extern "C" {
extern const CFArrayCallBacks kCFTypeArrayCallBacks;

void CFRelease(CFTypeRef object);
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
