#include "macos/launch_services.h"

#import <AppKit/AppKit.h>

#include <cerrno>
#include <string>
#include <sys/stat.h>

namespace tidwen {

namespace {

/// The user's own, or that of another disk ("/Volumes/Old/.Trashes/501").
bool isInTrash(const std::string& path) {
    return path.find("/.Trash/") != path.npos || path.find("/.Trashes/") != path.npos;
}

/// A record stays for a while after its application has gone. One that may not be looked at, as in another
/// account's home, has not gone.
bool isUsable(const std::string& path) {
    struct stat item {};
    const bool isGone = ::lstat(path.c_str(), &item) != 0 && (errno == ENOENT || errno == ENOTDIR);
    return !isGone && !isInTrash(path);
}

} // namespace

bool LaunchServices::isKnown(const std::string& bundleID) const {
    @autoreleasepool {
        NSString* const name = [NSString stringWithUTF8String:bundleID.c_str()];
        if (!name) return false;
        // One copy may be in the Trash and another one be used.
        for (NSURL* place in [NSWorkspace.sharedWorkspace URLsForApplicationsWithBundleIdentifier:name])
            if (isUsable(place.fileSystemRepresentation)) return true;
        return false;
    }
}

} // namespace tidwen
