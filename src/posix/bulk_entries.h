#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tidwen {

/// An entry of a folder as a size walk needs it. The inode and the device are those that stat gives.
struct EntrySize {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t links = 1;
    std::uint64_t allocatedBytes = 0;
    bool isFolder = false;
};

/// Reads the entries that getattrlistbulk(2) of macOS writes into a buffer when `common` and `file` are asked
/// for. Portable, because only the call itself needs a Mac; trusts nothing in the buffer.
class BulkEntries {
  public:
    /// Attributes to ask for, by the names of <sys/attr.h>: RETURNED_ATTRS, ERROR, FILEID, OBJTYPE, DEVID and
    /// NAME; ALLOCSIZE and LINKCOUNT.
    static constexpr std::uint32_t common = 0x80000000u | 0x20000000u | 0x02000000u | 0x8u | 0x2u | 0x1u,
                                   file = 0x4u | 0x1u;

    struct Entry {
        std::string_view name;         ///< followed by a zero byte
        std::optional<EntrySize> size; ///< absent for a folder, and when the disk did not say everything
    };

    explicit BulkEntries(std::string_view buffer) : rest_(buffer) {}
    /// Nothing after the last entry, and when the buffer makes no sense.
    std::optional<Entry> next();

  private:
    std::string_view rest_;
};

} // namespace tidwen
