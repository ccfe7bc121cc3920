#include "macos/launch_services.h"

#import <AppKit/AppKit.h>

#include <string>
#include <sys/stat.h>

namespace tidwen {

namespace {

/// The user's own, or that of another disk ("/Volumes/Old/.Trashes/501").
bool isInTrash(const std::string& path) {
    return path.find("/.Trash/") != path.npos || path.find("/.Trashes/") != path.npos;
}

/// A record stays for a while after its application has gone.
bool isUsable(const std::string& path) {
    struct stat item {};
    return ::lstat(path.c_str(), &item) == 0 && !isInTrash(path);
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
