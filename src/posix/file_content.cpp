#include "posix/file_content.h"

#include "posix/copied_bytes.h"
#include "posix/item_description.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

constexpr std::size_t pieceBytes = 256u << 10;

constexpr std::uint64_t mostHolesRead = std::uint64_t{1} << 30;

constexpr std::size_t mostRanges = 1u << 16; // a file with more ranges is read completely

struct Range {
    std::uint64_t begin;
    std::uint64_t end;
};

#ifdef SEEK_DATA

/// The data ranges that the file system reports; nullopt when it reports none, contradicts itself, or has
/// allocated more than that: some file systems report delayed allocations as holes.
std::optional<std::vector<Range>> reportedData(int file, std::uint64_t size) {
    const auto item = statOpen(file);
    if (!item) return std::nullopt;
    const auto block = static_cast<std::uint64_t>(std::max<long>(item->st_blksize, 1));
    std::vector<Range> ranges;
    std::uint64_t reported = 0;
    for (std::uint64_t offset = 0; offset < size;) {
        const off_t begin = ::lseek(file, static_cast<off_t>(offset), SEEK_DATA);
        if (begin < 0 && errno == ENXIO) break; // only a hole from here on
        const off_t end = begin < 0 ? begin : ::lseek(file, begin, SEEK_HOLE);
        const bool makesSense = end > begin && static_cast<std::uint64_t>(begin) >= offset;
        if (!makesSense || ranges.size() == mostRanges) return std::nullopt;
        offset = static_cast<std::uint64_t>(end);
        ranges.push_back({static_cast<std::uint64_t>(begin), offset});
        reported += (offset - ranges.back().begin + block - 1) / block * block;
    }
    constexpr std::uint64_t unit = 512; // of st_blocks
    if (static_cast<std::uint64_t>(item->st_blocks) * unit > reported) return std::nullopt;
    return ranges;
}

#endif

/// The ranges to copy: the whole file, unless the reported holes agree with the allocated size.
std::vector<Range> dataOf(int file, std::uint64_t size) {
    std::vector<Range> ranges;
#ifdef SEEK_DATA
    if (size > pieceBytes)
        if (auto reported = reportedData(file, size)) return *std::move(reported);
#endif
    ranges.push_back({0, size});
    return ranges;
}

/// Data of either file. Where both have a hole, both read as zeros.
std::vector<Range> merged(std::vector<Range> a, const std::vector<Range>& b) {
    a.insert(a.end(), b.begin(), b.end());
    std::ranges::sort(a, {}, &Range::begin);
    std::vector<Range> ranges;
    for (const Range& range : a)
        if (ranges.empty() || range.begin > ranges.back().end)
            ranges.push_back(range);
        else
            ranges.back().end = std::max(ranges.back().end, range.end);
    return ranges;
}

std::uint64_t bytesOf(const std::vector<Range>& ranges) {
    std::uint64_t bytes = 0;
    for (const Range& range : ranges)
        bytes += range.end - range.begin;
    return bytes;
}

/// The ranges to compare: everything, unless the holes reported by both disks are larger than anything a disk
/// may not have allocated yet.
std::vector<Range> comparedOf(int a, int b, std::uint64_t size) {
    auto ranges = merged(dataOf(a, size), dataOf(b, size));
    if (bytesOf(ranges) + mostHolesRead < size) return ranges;
    return {{0, size}};
}

/// How many of so many bytes the file's disk has not allocated.
std::uint64_t freeBytesOf(int file, std::uint64_t bytes) {
    constexpr std::uint64_t unit = 512; // of st_blocks
    const auto item = statOpen(file);
    return item ? bytes - std::min(bytes, static_cast<std::uint64_t>(item->st_blocks) * unit) : bytes;
}

/// Fills the buffer from `offset` or to the end of the file. Returns the number of bytes read, or -1.
ssize_t readPiece(int file, char* buffer, std::size_t length, std::uint64_t offset) {
    std::size_t done = 0;
    while (done < length) {
        const auto count = retryOnEintr(
            [&] { return ::pread(file, buffer + done, length - done, static_cast<off_t>(offset + done)); });
        if (count < 0) return -1;
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(done);
}

int writePiece(int file, const char* bytes, std::size_t length, std::uint64_t offset) {
    while (length > 0) {
        const auto count =
            retryOnEintr([&] { return ::pwrite(file, bytes, length, static_cast<off_t>(offset)); });
        if (count < 0) return errno;
        if (count == 0) return EIO;
        bytes += count;
        length -= static_cast<std::size_t>(count);
        offset += static_cast<std::uint64_t>(count);
    }
    return 0;
}

bool isZero(std::string_view bytes) {
    return bytes.find_first_not_of('\0') == bytes.npos;
}

} // namespace

int copyContent(int from, int to, std::uint64_t size) {
    std::vector<char> buffer(pieceBytes);
    for (const Range& data : dataOf(from, size)) {
        const auto end = std::min(data.end, size);
        for (std::uint64_t offset = data.begin; offset < end;) {
            const auto wanted = std::min<std::uint64_t>(buffer.size(), end - offset);
            const auto count = readPiece(from, buffer.data(), wanted, offset);
            if (count < 0) return errno;
            if (count == 0) break; // truncated meanwhile; the comparison will detect it
            const std::string_view piece(buffer.data(), static_cast<std::size_t>(count));
            if (!isZero(piece)) {
                if (const int fault = writePiece(to, piece.data(), piece.size(), offset)) return fault;
                CopiedBytes::add(piece.size());
            }
            offset += piece.size();
        }
    }
    return ::ftruncate(to, static_cast<off_t>(size)) == 0 ? 0 : errno;
}

OsResult<bool> haveSameContent(int a, int b, std::uint64_t size,
                               const std::function<bool(std::uint64_t)>& mayRead) {
    const auto ranges = comparedOf(a, b, size);
    if (mayRead && !mayRead(freeBytesOf(a, bytesOf(ranges)))) return tl::unexpected(ECANCELED);
    std::vector<char> first(pieceBytes), second(pieceBytes);
    for (const Range& range : ranges) {
        const auto end = std::min(range.end, size);
        for (std::uint64_t offset = range.begin; offset < end;) {
            if (mayRead && !mayRead(0)) return tl::unexpected(ECANCELED);
            const auto wanted = std::min<std::uint64_t>(pieceBytes, end - offset);
            const auto countA = readPiece(a, first.data(), wanted, offset);
            if (countA < 0) return tl::unexpected(errno);
            const auto countB = readPiece(b, second.data(), wanted, offset);
            if (countB < 0) return tl::unexpected(errno);
            if (static_cast<std::uint64_t>(countA) != wanted || countA != countB) return false;
            if (std::memcmp(first.data(), second.data(), wanted) != 0) return false;
            offset += wanted;
        }
    }
    return true;
}

} // namespace tidwen
