#pragma once

#include "base/descriptor.h"
#include "posix/item_description.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace tidwen {

/// A small file of this machine's user that several processes of that user read and replace. Errors are
/// answers; nothing here throws but for want of memory.
class SharedFile {
  public:
    /// Identifies one state of the file.
    struct Version {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::uint64_t size = 0;
        std::int64_t modified = 0; ///< in the file clock's own unit
        friend bool operator==(const Version&, const Version&) = default;
    };
    enum class Fault {
        missing,
        linkToNothing, ///< a link to a missing file: its disk may not be attached
        foreignLink,   ///< as root only: the file or a folder above it is another user's link to what is not
                       ///< theirs
        denied,        ///< the file or a folder above it is not readable
        tooLarge,
        unreadable, ///< not a plain file, or the disk failed
    };

    enum class Links { followed, kept };

    /// The target of a link is replaced, unless `links` says to replace the link itself.
    explicit SharedFile(const std::filesystem::path& path, Links links = Links::followed);

    const std::filesystem::path& path() const { return path_; }

    tl::expected<Version, Fault> version() const;
    /// The whole content of a plain file of at most `maxBytes`. Waits for no lock.
    tl::expected<std::string, Fault> read(std::size_t maxBytes) const;

    /// Writes so that after a crash the file has either the old or the new content, readable only by its
    /// owner. Call it with the lock held. What root creates, the file, its lock and its folders, gets the
    /// owner of its parent folder.
    bool replace(std::string_view content) const;
    /// Creates the folder of the file (mode 0700) and missing parents.
    bool makeFolder() const;

    /// How long a writer waits for another process: a holder needs only the time to write a file, so after
    /// this it hangs.
    static constexpr std::chrono::milliseconds usualPatience{5000};

    /// Excludes other processes from the lock of the same file during its lifetime.
    class Lock {
      public:
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        bool isHeld() const { return file_.isOpen(); }
        /// Not held because another process keeps it; otherwise the folder accepts no lock file.
        bool isBusy() const { return isBusy_; }

      private:
        friend class SharedFile;
        Lock(Descriptor file, std::chrono::milliseconds patience);
        Descriptor file_; ///< the kernel releases the lock with it
        bool isBusy_ = false;
    };
    /// Creates the folder of the file if it is missing.
    Lock lock(std::chrono::milliseconds patience = usualPatience) const;
    /// Locks the folder itself, for folders where a lock file would disturb others. Creates nothing.
    Lock lockFolder() const;

  private:
    Fault faultOf(int osCode) const;
    std::filesystem::path sibling(const std::string& ending) const;

    std::filesystem::path path_;
    std::filesystem::path given_; ///< the path as given, perhaps a link; `path_` is its target
    bool isForeignLink_ = false;
};

} // namespace tidwen
