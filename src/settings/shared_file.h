#pragma once

#include "base/descriptor.h"

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
    /// Tells one state of the file from the next.
    struct Version {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::uint64_t size = 0;
        std::int64_t modified = 0; ///< in the file clock's own unit
        friend bool operator==(const Version&, const Version&) = default;
    };
    enum class Fault {
        missing,
        linkToNothing, ///< a link that leads to no file: perhaps its disk is away
        foreignLink, ///< seen by root: the file or a folder above it is somebody's link to what is another's
        denied,      ///< the file or a folder above it may not be read
        tooLarge,
        unreadable, ///< no plain file, or the disk failed
    };

    enum class Links { followed, kept };

    /// A linked file is replaced where the link leads, unless `links` says that the link itself is.
    explicit SharedFile(const std::filesystem::path& path, Links links = Links::followed);

    const std::filesystem::path& path() const { return path_; }

    tl::expected<Version, Fault> version() const;
    /// The whole content, when it is a plain file of at most `maxBytes`. Waits for nobody's lock.
    tl::expected<std::string, Fault> read(std::size_t maxBytes) const;

    /// Writes so that after a crash either the old content or the new is there, readable by its owner alone.
    /// Call it with the lock held. What root makes, this file, its lock and its folders, belongs to the owner
    /// of the folder that it is made in.
    bool replace(std::string_view content) const;
    /// Makes the folder of the file (mode 0700) and those above it when they are missing.
    bool makeFolder() const;

    /// How long a writer waits for another process: none holds the lock longer than it takes to write a
    /// file, so the other one hangs.
    static constexpr std::chrono::milliseconds usualPatience{5000};

    /// While it lives no other process holds the lock of the same file.
    class Lock {
      public:
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        bool isHeld() const { return file_.isOpen(); }
        /// Not held because another process did not give it up; else the folder takes no lock file.
        bool isBusy() const { return isBusy_; }

      private:
        friend class SharedFile;
        Lock(Descriptor file, std::chrono::milliseconds patience);
        Descriptor file_; ///< the kernel drops the lock with it
        bool isBusy_ = false;
    };
    /// Makes the folder of the file when it is missing.
    Lock lock(std::chrono::milliseconds patience = usualPatience) const;
    /// The same by the folder itself, where a lock file would lie in the way of others. Makes nothing.
    Lock lockFolder() const;

  private:
    Fault faultOf(int osCode) const;
    std::filesystem::path sibling(const std::string& ending) const;

    std::filesystem::path path_;
    std::filesystem::path given_; ///< `path_` as it was named, perhaps a link
    bool isForeignLink_ = false;
};

} // namespace tidwen
