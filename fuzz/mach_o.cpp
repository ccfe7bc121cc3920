// Executables and the parts of their signatures: the result is valid text for every input.

#include "base/text.h"
#include "platform/code_directory.h"
#include "platform/entitlements.h"
#include "platform/mach_o_signature.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace tidwen;

void requireClean(const std::vector<std::string>& groups) {
    for (const auto& group : groups)
        if (group.empty() || !isValidUtf8(group)) std::abort();
}

void requireClean(const std::optional<std::string>& team) {
    if (team && (team->empty() || !isValidUtf8(*team))) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const ByteSource source = [&](std::uint64_t offset, std::size_t length) {
        return offset < bytes.size() ? std::string(bytes.substr(static_cast<std::size_t>(offset), length))
                                     : std::string();
    };
    const auto signature = readMachOSignature(source);
    requireClean(signature.teamID);
    requireClean(signature.applicationGroups);
    requireClean(readTeamID(source, bytes.size()));
    if (const auto groups = groupsFromXmlEntitlements(bytes)) requireClean(*groups);
    if (const auto groups = groupsFromDerEntitlements(bytes)) requireClean(*groups);
    return 0;
}
