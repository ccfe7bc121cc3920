#include "sample/mach_o_stub.h"

#include "base/property_list.h"
#include "sample/byte_writer.h"

#include <cstdint>
#include <string_view>

namespace tidwen {

namespace {

constexpr std::uint32_t cpuX8664 = 0x01000007;
constexpr std::uint32_t cpuArm64 = 0x0100000c;

struct Blob {
    std::uint32_t slot = 0;
    std::string bytes;
};

std::string blob(std::uint32_t magic, std::string_view payload) {
    return ByteWriter().big32(magic).big32(payload.size() + 8).text(payload).take();
}

/// One DER element: tag, length in as few bytes as possible, content.
std::string der(std::uint8_t tag, std::string_view content) {
    ByteWriter out;
    out.byte(tag);
    if (content.size() >= 0x10000)
        out.byte(0x84).big32(content.size());
    else if (content.size() >= 0x100)
        out.byte(0x82).big16(static_cast<std::uint16_t>(content.size()));
    else if (content.size() >= 0x80)
        out.byte(0x81).byte(static_cast<std::uint8_t>(content.size()));
    else
        out.byte(static_cast<std::uint8_t>(content.size()));
    return out.text(content).take();
}

std::string derEntitlements(const std::vector<std::string>& groups) {
    std::string array;
    for (const auto& group : groups)
        array += der(0x0c, group);
    const auto sandbox = der(0x30, der(0x0c, "com.apple.security.app-sandbox") + der(0x01, "\xff"));
    const auto shared = der(0x30, der(0x0c, "com.apple.security.application-groups") + der(0x30, array));
    return der(0x70, der(0x02, "\x01") + der(0xb0, sandbox + shared));
}

std::string xmlEntitlements(const std::vector<std::string>& groups) {
    return writeXmlPropertyList(PropertyListDictionary{
        {"com.apple.security.app-sandbox", true},
        {"com.apple.security.application-groups", PropertyListArray(groups.begin(), groups.end())}});
}

std::string codeDirectory(const MachOStub& stub) {
    constexpr std::uint32_t headerSize = 88; // of version 0x20400
    const bool hasTeam = !stub.teamID.empty();
    const auto teamOffset = headerSize + stub.identifier.size() + 1;
    const auto end = teamOffset + (hasTeam ? stub.teamID.size() + 1 : 0);

    ByteWriter out;
    out.big32(0xfade0c02).big32(end).big32(0x20400);
    out.big32(hasTeam ? 0x10000 : 0x2); // hardened runtime, or ad hoc
    out.big32(end).big32(headerSize);   // offset of the (missing) hashes, and of the identifier
    out.big32(0).big32(0).big32(0);     // special slots, code slots, code limit: nothing is covered
    out.byte(32).byte(2).byte(0).byte(12).big32(0); // SHA-256, pages of 4096 bytes
    out.big32(0).big32(hasTeam ? teamOffset : 0).big32(0);
    out.big64(0).big64(0).big64(0).big64(0); // code limit, executable segment
    out.terminated(stub.identifier);
    if (hasTeam) out.terminated(stub.teamID);
    return out.take();
}

std::string superBlob(const MachOStub& stub) {
    using Entitlements = MachOStub::Entitlements;
    std::vector<Blob> blobs{{0, codeDirectory(stub)}};
    if (!stub.applicationGroups.empty() && stub.entitlements != Entitlements::derOnly)
        blobs.push_back({5, blob(0xfade7171, xmlEntitlements(stub.applicationGroups))});
    if (!stub.applicationGroups.empty() && stub.entitlements != Entitlements::xmlOnly)
        blobs.push_back({7, blob(0xfade7172, derEntitlements(stub.applicationGroups))});
    blobs.push_back({0x10000, blob(0xfade0b01, "")});

    ByteWriter index, content;
    const auto indexSize = 12 + 8 * blobs.size();
    for (const auto& each : blobs) {
        index.big32(each.slot).big32(indexSize + content.size());
        content.text(each.bytes);
    }
    return ByteWriter()
        .big32(0xfade0cc0)
        .big32(indexSize + content.size())
        .big32(blobs.size())
        .text(index.take())
        .text(content.take())
        .take();
}

std::string thin(const MachOStub& stub, std::uint32_t cpu) {
    constexpr std::size_t headerSize = 32, commandSize = 16, signatureAlignment = 16;
    const auto signature = superBlob(stub);
    const auto signatureOffset = (headerSize + commandSize + stub.padding + signatureAlignment - 1)
                                 / signatureAlignment * signatureAlignment;

    ByteWriter out;
    out.little32(0xfeedfacf).little32(cpu).little32(cpu == cpuX8664 ? 3 : 0);
    out.little32(2).little32(1).little32(commandSize); // an executable with one load command
    out.little32(0x00200085).little32(0);              // the flags of an ordinary executable
    out.little32(0x1d).little32(commandSize).little32(signatureOffset).little32(signature.size());
    return out.padTo(signatureOffset).text(signature).take();
}

} // namespace

std::string writeMachOStub(const MachOStub& stub) {
    if (!stub.universal) return thin(stub, cpuArm64);

    constexpr std::uint32_t alignmentPower = 14;
    constexpr std::size_t alignment = std::size_t{1} << alignmentPower;
    ByteWriter header, slices;
    header.big32(0xcafebabe).big32(2);
    for (const auto cpu : {cpuX8664, cpuArm64}) {
        const auto slice = thin(stub, cpu);
        const auto offset = alignment + (slices.size() + alignment - 1) / alignment * alignment;
        header.big32(cpu)
            .big32(cpu == cpuX8664 ? 3 : 0)
            .big32(offset)
            .big32(slice.size())
            .big32(alignmentPower);
        slices.padTo(offset - alignment).text(slice);
    }
    return header.padTo(alignment).text(slices.take()).take();
}

} // namespace tidwen
