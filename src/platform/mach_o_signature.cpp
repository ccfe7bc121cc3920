#include "platform/mach_o_signature.h"

#include "platform/byte_reader.h"
#include "platform/code_directory.h"
#include "platform/entitlements.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {

namespace {

constexpr std::uint32_t magic64 = 0xfeedfacf;
constexpr std::uint32_t magic32 = 0xfeedface;
constexpr std::uint32_t magicUniversal = 0xcafebabe; // also used by Java class files
constexpr std::uint32_t magicUniversal64 = 0xcafebabf;
constexpr std::uint32_t cpuArm64 = 0x0100000c;
constexpr std::uint32_t commandCodeSignature = 0x1d;
constexpr std::uint32_t magicSuperBlob = 0xfade0cc0;

constexpr std::uint32_t slotCodeDirectory = 0;
constexpr std::uint32_t slotAlternateCodeDirectory = 0x1000;
constexpr std::uint32_t alternateCodeDirectories = 5;
constexpr std::uint32_t slotXmlEntitlements = 5;
constexpr std::uint32_t slotDerEntitlements = 7;

// Real files stay far below these; a file that claims more is not read further.
constexpr std::uint32_t maxSlices = 16;
constexpr std::uint32_t maxCommandBytes = 1u << 20;
constexpr std::uint32_t maxBlobs = 128;

/// A part of the file; reads through it cannot go outside of it.
struct Region {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;

    std::optional<Region> part(std::uint64_t at, std::uint64_t length) const {
        if (at > size || length > size - at) return std::nullopt;
        return Region{offset + at, length};
    }
};

/// Reads at least a few kilobytes at a time, because the next part is usually close behind.
class File {
  public:
    explicit File(const ByteSource& source) : source_(source) {}

    /// Up to `length` bytes of a region, fewer at the end of the region or the file.
    std::string_view read(const Region& region, std::uint64_t at, std::size_t length) {
        constexpr std::size_t readAhead = 4096;
        if (at >= region.size) return {};
        const auto offset = region.offset + at;
        length = static_cast<std::size_t>(std::min<std::uint64_t>(length, region.size - at));
        if (offset < chunkOffset_ || offset - chunkOffset_ > chunk_.size()
            || length > chunk_.size() - (offset - chunkOffset_)) {
            chunk_ = source_(offset, std::max(length, readAhead));
            chunkOffset_ = offset;
        }
        return std::string_view(chunk_).substr(static_cast<std::size_t>(offset - chunkOffset_), length);
    }

    /// The code read is truncated or inconsistent, so its content is unknown.
    void noteDamage() { isDamaged_ = true; }
    /// Whether damage was noted since the last call.
    bool takeDamage() { return std::exchange(isDamaged_, false); }

  private:
    const ByteSource& source_;
    std::string chunk_;
    std::uint64_t chunkOffset_ = 0;
    bool isDamaged_ = false;
};

/// The slices of a universal file, those for arm64 first; a thin file is its only slice.
std::vector<Region> slices(File& file) {
    constexpr Region whole{0, std::uint64_t{1} << 62};
    const ByteReader header(file.read(whole, 0, 8 + 32 * maxSlices));
    const auto magic = header.big32(0), count = header.big32(4);
    if (magic != magicUniversal && magic != magicUniversal64) return {whole};
    if (!count) file.noteDamage();
    if (!count || *count > maxSlices) return {};

    const bool wide = magic == magicUniversal64;
    std::vector<Region> arm, others;
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto at = 8 + i * (wide ? 32u : 20u);
        const auto cpu = header.big32(at);
        std::optional<std::uint64_t> offset = header.big32(at + 8), size = header.big32(at + 12);
        if (wide) offset = header.big64(at + 8), size = header.big64(at + 16);
        if (!cpu || !offset || !size) {
            file.noteDamage();
            break;
        }
        if (const auto slice = whole.part(*offset, *size))
            (*cpu == cpuArm64 ? arm : others).push_back(*slice);
    }
    arm.insert(arm.end(), others.begin(), others.end());
    return arm;
}

/// The signature's location according to a slice's load commands.
std::optional<Region> signatureOf(const Region& slice, File& file) {
    const std::string head(file.read(slice, 0, 32));
    const ByteReader header(head);
    const auto magic = header.little32(0), commandBytes = header.little32(20);
    const auto damaged = [&] { return file.noteDamage(), std::nullopt; };
    if (head.empty() && slice.offset > 0) return damaged();
    if (magic != magic64 && magic != magic32) return std::nullopt;
    if (!commandBytes || *commandBytes > maxCommandBytes) return damaged();

    const auto bytes = file.read(slice, magic == magic64 ? 32 : 28, *commandBytes);
    if (bytes.size() < *commandBytes) return damaged();
    const ByteReader commands(bytes);
    for (std::uint64_t at = 0; at < bytes.size();) {
        const auto command = commands.little32(at), size = commands.little32(at + 4);
        if (!command || !size || *size < 8) return damaged();
        if (*command == commandCodeSignature) {
            const auto offset = commands.little32(at + 8), length = commands.little32(at + 12);
            const auto signature = offset && length ? slice.part(*offset, *length) : std::nullopt;
            if (!signature) return damaged();
            return signature;
        }
        at += *size;
    }
    return std::nullopt;
}

/// The blobs of a signature by slot; each extends to the end of the signature. The first of a slot counts.
std::map<std::uint32_t, Region> blobsOf(const Region& signature, File& file) {
    const ByteReader index(file.read(signature, 0, 12 + 8 * maxBlobs));
    const auto length = index.big32(4), count = index.big32(8);
    std::map<std::uint32_t, Region> blobs;
    if (index.big32(0) != magicSuperBlob || !length || !count || *length > signature.size)
        return file.noteDamage(), blobs;
    for (std::uint32_t i = 0; i < std::min(*count, maxBlobs); ++i) {
        const auto slot = index.big32(12 + 8 * i), offset = index.big32(16 + 8 * i);
        if (!slot || !offset) {
            file.noteDamage();
            break;
        }
        if (*offset < *length) blobs.emplace(*slot, Region{signature.offset + *offset, *length - *offset});
    }
    return blobs;
}

std::optional<std::string> teamOf(const std::map<std::uint32_t, Region>& blobs, File& file) {
    const auto teamIn = [&](std::uint32_t slot) -> std::optional<std::string> {
        const auto blob = blobs.find(slot);
        if (blob == blobs.end()) return std::nullopt;
        const auto& region = blob->second;
        return readTeamID([&](std::uint64_t offset,
                              std::size_t length) { return std::string(file.read(region, offset, length)); },
                          region.size);
    };
    auto team = teamIn(slotCodeDirectory);
    for (std::uint32_t i = 0; !team && i < alternateCodeDirectories; ++i)
        team = teamIn(slotAlternateCodeDirectory + i);
    return team;
}

std::string_view blobBytes(const std::map<std::uint32_t, Region>& blobs, std::uint32_t slot, File& file) {
    const auto blob = blobs.find(slot);
    if (blob == blobs.end()) return {};
    const auto length = ByteReader(file.read(blob->second, 0, 8)).big32(4);
    if (!length || *length > maxEntitlementBytes) return {};
    return file.read(blob->second, 0, *length);
}

CodeSignature readSlice(const Region& slice, File& file) {
    const auto signature = signatureOf(slice, file);
    if (!signature) return {.teamID = {}, .applicationGroups = {}, .isUnreadable = file.takeDamage()};
    const auto blobs = blobsOf(*signature, file);

    CodeSignature result;
    result.teamID = teamOf(blobs, file);
    auto groups = groupsFromXmlEntitlements(blobBytes(blobs, slotXmlEntitlements, file));
    if (!groups) groups = groupsFromDerEntitlements(blobBytes(blobs, slotDerEntitlements, file));
    if (groups)
        result.applicationGroups = std::move(*groups);
    else
        result.isUnreadable = blobs.contains(slotXmlEntitlements) || blobs.contains(slotDerEntitlements);
    result.isUnreadable |= file.takeDamage();
    return result;
}

} // namespace

CodeSignature readMachOSignature(const ByteSource& source) {
    File file(source);
    const auto parts = slices(file);
    CodeSignature damaged{.teamID = {}, .applicationGroups = {}, .isUnreadable = file.takeDamage()};
    for (const auto& slice : parts) {
        auto signature = readSlice(slice, file);
        if (signature != CodeSignature{} && !signature.isUnreadable) return signature;
        if (signature.isUnreadable && !damaged.teamID) damaged = std::move(signature);
    }
    return damaged;
}

} // namespace tidwen
