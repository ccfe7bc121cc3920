#include "macos/group_container.h"

#include "macos/foundation_text.h"

namespace tidwen {

std::optional<Path> groupContainer(const std::string& group) {
    @autoreleasepool {
        NSURL* const place =
            [NSFileManager.defaultManager containerURLForSecurityApplicationGroupIdentifier:nsString(group)];
        return place ? std::optional(Path(place.fileSystemRepresentation)) : std::nullopt;
    }
}

} // namespace tidwen
