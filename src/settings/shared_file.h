#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace tidwen {

/// A small file of this machine's user that several processes of his read and replace. Errors are answers;
/// nothing here throws but for want of memory.
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
    enum class Fault { missing, unreadable };

    enum class Links { followed, kept };

    /// A linked file is replaced where the link leads, unless `links` says that the link itself is.
    explicit SharedFile(const std::filesystem::path& path, Links links = Links::followed);

    const std::filesystem::path& path() const { return path_; }

    tl::expected<Version, Fault> version() const;
    /// The whole content; `unreadable` when it is no plain file or holds more than `maxBytes`.
    tl::expected<std::string, Fault> read(std::size_t maxBytes) const;

    /// Writes so that after a crash either the old content or the new is there, readable by its owner alone.
    /// Call it with the lock held.
    bool replace(std::string_view content) const;
    /// Renames the file to "<name>.<suffix>", "<name>.<suffix>-2" … whichever is free, and gives that name.
    /// Nothing when it is reached through a link: what lies there may be anybody's. Call it with the lock
    /// held.
    std::optional<std::filesystem::path> setAside(const std::string& suffix) const;

    /// While it lives no other process holds the lock of the same file. Waits for its turn.
    class Lock {
      public:
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        ~Lock();
        bool isHeld() const { return descriptor_ >= 0; } ///< false when the folder takes no lock file

      private:
        friend class SharedFile;
        explicit Lock(int descriptor); ///< takes the lock on what is open there; -1 for none
        int descriptor_;
    };
    /// Makes the folder of the file (mode 0700) when it is missing.
    Lock lock() const;
    /// The same by the folder itself, where a lock file would lie in the way of others. Makes nothing.
    Lock lockFolder() const;

  private:
    std::filesystem::path sibling(const std::string& ending) const;

    std::filesystem::path path_;
    bool isLinked_ = false;
};

} // namespace tidwen
