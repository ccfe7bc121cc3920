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

} // namespace

bool LaunchServices::isKnown(const std::string& bundleID) const {
    @autoreleasepool {
        NSString* const name = [NSString stringWithUTF8String:bundleID.c_str()];
        NSURL* const place =
            name ? [NSWorkspace.sharedWorkspace URLForApplicationWithBundleIdentifier:name] : nil;
        if (!place) return false;
        const std::string path = place.fileSystemRepresentation;
        struct stat item {};
        // A record stays for a while after its application has gone.
        return ::lstat(path.c_str(), &item) == 0 && !isInTrash(path);
    }
}

} // namespace tidwen
