#pragma once

#include "platform/file_system.h"

#include <cstdint>
#include <optional>

namespace tidwen {

/// What lay at a path when it was found. Minutes may pass until the user has decided, and what took the path
/// meanwhile was not shown to anybody.
struct FoundItem {
    /// How much of it must be the same.
    enum class Part {
        kind,    ///< a file that is saved by replacing it, such as settings
        item,    ///< the file or folder itself, whatever is written into it
        content, ///< a file that nothing writes to: its size and date as well
    };

    FoundItem(const FileInfo& found, Part part);

    bool isStill(const FileInfo& now) const;
    std::int64_t modifiedNanoseconds() const { return modified_; } ///< since 1970
    friend bool operator==(const FoundItem&, const FoundItem&) = default;

  private:
    Part part_;
    FileKind kind_;
    std::uint64_t device_, inode_;
    std::optional<std::int64_t> created_; ///< the inode of a deleted item is soon another one's
    std::uint64_t size_;
    std::int64_t modified_;
};

} // namespace tidwen
