#include "platform/code_directory.h"
#include "platform/entitlements.h"
#include "platform/mach_o_signature.h"
#include "volume/volume_sources.h"

namespace tidwen {

namespace {

/// Code that is no Mach-O file, a script for instance, has its signature in files of its own.
CodeSignature readDetached(const FileSystem& files, const Path& folder) {
    constexpr std::size_t maxDirectoryBytes = 1u << 20;
    CodeSignature result;
    if (const auto directory = files.read(folder / "CodeDirectory", maxDirectoryBytes))
        result.teamID = readTeamID(
            [&](std::uint64_t offset, std::size_t length) {
                return offset < directory->size()
                           ? directory->substr(static_cast<std::size_t>(offset), length)
                           : std::string();
            },
            directory->size());
    if (const auto entitlements = files.read(folder / "CodeEntitlements", maxEntitlementBytes))
        if (auto groups = groupsFromXmlEntitlements(*entitlements))
            result.applicationGroups = std::move(*groups);
    return result;
}

} // namespace

CodeSignature FileCodeSignatures::read(const Path& bundle, const Path& executable) const {
    auto signature = readMachOSignature([&](std::uint64_t offset, std::size_t length) {
        return files_.readRange(executable, offset, length).value_or(std::string());
    });
    if (signature != CodeSignature{}) return signature;
    return readDetached(files_, bundle / "Contents/_CodeSignature");
}

} // namespace tidwen
