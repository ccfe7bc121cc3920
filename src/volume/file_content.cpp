#include "volume/file_content.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace tidwen {

namespace {

constexpr std::size_t pieceBytes = 256u << 10;

struct Range {
    std::uint64_t begin;
    std::uint64_t end;
};

/// The next stretch of a file that is no hole. A disk that does not tell holes has data only.
Range dataFrom(int file, std::uint64_t offset, std::uint64_t size) {
#ifdef SEEK_DATA
    const off_t begin = ::lseek(file, static_cast<off_t>(offset), SEEK_DATA);
    if (begin < 0 && errno == ENXIO) return {size, size};
    if (begin >= 0) {
        const off_t end = ::lseek(file, begin, SEEK_HOLE);
        if (end > begin)
            return {std::min(size, static_cast<std::uint64_t>(begin)),
                    std::min(size, static_cast<std::uint64_t>(end))};
    }
#endif
    return {std::min(offset, size), size};
}

/// Fills the buffer from `offset` or to the end of the file; the bytes read, or -1.
ssize_t readPiece(int file, char* buffer, std::size_t length, std::uint64_t offset) {
    std::size_t done = 0;
    while (done < length) {
        const auto count = uninterrupted(
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
            uninterrupted([&] { return ::pwrite(file, bytes, length, static_cast<off_t>(offset)); });
        if (count < 0) return errno;
        if (count == 0) return EIO;
        bytes += count;
        length -= static_cast<std::size_t>(count);
        offset += static_cast<std::uint64_t>(count);
    }
    return 0;
}

} // namespace

int copyContent(int from, int to, std::uint64_t size) {
    std::vector<char> buffer(pieceBytes);
    for (Range data = dataFrom(from, 0, size); data.begin < size; data = dataFrom(from, data.end, size)) {
        for (std::uint64_t offset = data.begin; offset < data.end;) {
            const auto wanted = std::min<std::uint64_t>(buffer.size(), data.end - offset);
            const auto count = readPiece(from, buffer.data(), wanted, offset);
            if (count < 0) return errno;
            if (count == 0) break; // cut shorter meanwhile; the comparison will tell
            if (const int fault = writePiece(to, buffer.data(), static_cast<std::size_t>(count), offset))
                return fault;
            offset += static_cast<std::uint64_t>(count);
        }
    }
    return ::ftruncate(to, static_cast<off_t>(size)) == 0 ? 0 : errno;
}

OsResult<bool> haveSameContent(int a, int b, std::uint64_t size) {
    std::vector<char> first(pieceBytes), second(pieceBytes);
    for (std::uint64_t offset = 0; offset < size;) {
        // A stretch that is a hole in both is not read.
        const Range inA = dataFrom(a, offset, size), inB = dataFrom(b, offset, size);
        const Range range = inA.begin <= inB.begin ? inA : inB;
        if (range.begin >= size) break;
        offset = range.begin;
        while (offset < range.end) {
            const auto wanted = std::min<std::uint64_t>(pieceBytes, range.end - offset);
            const auto countA = readPiece(a, first.data(), wanted, offset);
            const auto countB = readPiece(b, second.data(), wanted, offset);
            if (countA < 0 || countB < 0) return tl::unexpected(errno);
            if (static_cast<std::uint64_t>(countA) != wanted || countA != countB) return false;
            if (std::memcmp(first.data(), second.data(), wanted) != 0) return false;
            offset += wanted;
        }
    }
    return true;
}

} // namespace tidwen
