// What Tidwen uses of the file system events, of Spotlight and of Grand Central Dispatch; see
// CoreFoundation.h beside it.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>

using dispatch_queue_t = struct dispatch_queue_s*;
using dispatch_queue_attr_t = struct dispatch_queue_attr_s*;
using dispatch_function_t = void (*)(void*);

using FSEventStreamRef = struct FSEventStream*;
using ConstFSEventStreamRef = const struct FSEventStream*;
using FSEventStreamCreateFlags = std::uint32_t;
using FSEventStreamEventFlags = std::uint32_t;
using FSEventStreamEventId = std::uint64_t;
constexpr FSEventStreamCreateFlags kFSEventStreamCreateFlagNoDefer = 0x02;
constexpr FSEventStreamCreateFlags kFSEventStreamCreateFlagFileEvents = 0x10;
constexpr FSEventStreamCreateFlags kFSEventStreamCreateFlagWatchRoot = 0x04;
constexpr FSEventStreamEventFlags kFSEventStreamEventFlagMustScanSubDirs = 0x01;
constexpr FSEventStreamEventFlags kFSEventStreamEventFlagRootChanged = 0x20;
constexpr FSEventStreamEventId kFSEventStreamEventIdSinceNow = 0xFFFFFFFFFFFFFFFF;

struct FSEventStreamContext {
    CFIndex version;
    void* info;
    const void* (*retain)(const void* info);
    void (*release)(const void* info);
    CFStringRef (*copyDescription)(const void* info);
};
using FSEventStreamCallback = void (*)(ConstFSEventStreamRef, void* info, std::size_t count, void* paths,
                                       const FSEventStreamEventFlags* flags, const FSEventStreamEventId* ids);

using MDItemRef = struct MDItem*;

extern "C" {
extern const CFStringRef kMDItemLastUsedDate;
MDItemRef MDItemCreate(CFAllocatorRef allocator, CFStringRef path);
CFTypeRef MDItemCopyAttribute(MDItemRef item, CFStringRef name);

dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attributes);
void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
void dispatch_release(dispatch_queue_t queue);

FSEventStreamRef FSEventStreamCreate(CFAllocatorRef allocator, FSEventStreamCallback callback,
                                     FSEventStreamContext* context, CFArrayRef paths,
                                     FSEventStreamEventId since, CFTimeInterval latency,
                                     FSEventStreamCreateFlags flags);
void FSEventStreamSetDispatchQueue(FSEventStreamRef stream, dispatch_queue_t queue);
Boolean FSEventStreamStart(FSEventStreamRef stream);
void FSEventStreamStop(FSEventStreamRef stream);
void FSEventStreamInvalidate(FSEventStreamRef stream);
void FSEventStreamRelease(FSEventStreamRef stream);
}
