#include "posix/bulk_entries.h"

#include <cstring>

namespace tidwen {

namespace {

constexpr std::uint32_t returnedAttributes = 0x80000000u, errorOfEntry = 0x20000000u, fileID = 0x02000000u,
                        objectType = 0x8u, deviceID = 0x2u, nameOfEntry = 0x1u;
constexpr std::uint32_t needed = fileID | objectType | deviceID;
constexpr std::uint32_t folderType = 2; // VDIR

/// Takes the values of one entry in their order; they are packed to four bytes.
class Fields {
  public:
    explicit Fields(std::string_view entry) : entry_(entry) {}

    template<class Number>
    std::optional<Number> take() {
        Number value{};
        if (entry_.size() - at_ < sizeof value) return std::nullopt;
        std::memcpy(&value, entry_.data() + at_, sizeof value);
        at_ += sizeof value;
        return value;
    }

    std::optional<std::string_view> takeName() {
        const auto start = static_cast<std::int64_t>(at_); // the offset counts from the reference to the name
        const auto offset = take<std::int32_t>();
        const auto length = take<std::uint32_t>();
        if (!offset || !length || *length == 0 || start + *offset < 0) return std::nullopt;
        const auto begin = static_cast<std::size_t>(start + *offset);
        if (begin > entry_.size() || entry_.size() - begin < *length) return std::nullopt;
        const auto name = entry_.substr(begin, *length - 1);
        const bool isWhole = entry_[begin + name.size()] == '\0' && name.find('\0') == name.npos;
        return isWhole && !name.empty() ? std::optional(name) : std::nullopt;
    }

  private:
    std::string_view entry_;
    std::size_t at_ = 0;
};

std::optional<EntrySize> sizeIn(Fields& fields, std::uint32_t common, std::uint32_t file) {
    if ((common & needed) != needed || file != BulkEntries::file) return std::nullopt;
    const auto device = fields.take<std::int32_t>();
    const auto type = fields.take<std::uint32_t>();
    const auto inode = fields.take<std::uint64_t>();
    const auto links = fields.take<std::uint32_t>();
    const auto allocated = fields.take<std::uint64_t>();
    if (!device || !type || *type == folderType || !inode || !links || !allocated) return std::nullopt;
    // As stat gives it: a device is a signed number there.
    return EntrySize{.device = static_cast<std::uint64_t>(*device),
                     .inode = *inode,
                     .links = *links,
                     .allocatedBytes = *allocated};
}

} // namespace

std::optional<BulkEntries::Entry> BulkEntries::next() {
    Fields start(rest_);
    const auto length = start.take<std::uint32_t>();
    if (!length || *length > rest_.size() || *length < sizeof *length) return std::nullopt;
    Fields fields(rest_.substr(0, *length));
    rest_.remove_prefix(*length);

    (void)fields.take<std::uint32_t>(); // the length
    std::array<std::uint32_t, 5> returned{};
    for (auto& group : returned)
        group = fields.take<std::uint32_t>().value_or(0);
    const auto commonThere = returned[0], fileThere = returned[3];
    const bool isFaulty = (commonThere & errorOfEntry) != 0 && fields.take<std::uint32_t>().value_or(1) != 0;
    if ((commonThere & returnedAttributes) == 0 || (commonThere & nameOfEntry) == 0) return std::nullopt;
    const auto name = fields.takeName();
    if (!name) return std::nullopt;
    return Entry{.name = *name, .size = isFaulty ? std::nullopt : sizeIn(fields, commonThere, fileThere)};
}

} // namespace tidwen
