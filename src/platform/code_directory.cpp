#include "platform/code_directory.h"

#include "platform/byte_reader.h"

#include <algorithm>
#include <cstdint>

namespace tidwen {

std::optional<std::string> readTeamID(const ByteSource& directory, std::uint64_t available) {
    constexpr std::size_t headerSize = 52; // up to the end of teamOffset
    constexpr std::size_t maxTeamBytes = 64;
    constexpr std::uint32_t magic = 0xfade0c02, firstVersionWithTeam = 0x20200;

    const auto bytes = directory(0, headerSize);
    const ByteReader header(bytes);
    const auto length = header.big32(4), version = header.big32(8), teamOffset = header.big32(48);
    if (header.big32(0) != magic || !length || !version || !teamOffset) return std::nullopt;
    if (*version < firstVersionWithTeam || *length > available || *teamOffset == 0 || *teamOffset >= *length)
        return std::nullopt;

    const auto text = directory(*teamOffset, std::min<std::size_t>(*length - *teamOffset, maxTeamBytes + 1));
    const auto team = ByteReader(text).terminated(0, maxTeamBytes);
    const auto isPrintable = [](char c) { return c > ' ' && c < 0x7f; };
    if (!team || team->empty() || !std::all_of(team->begin(), team->end(), isPrintable)) return std::nullopt;
    return std::string(*team);
}

} // namespace tidwen
