#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tidwen {

/// What a stand-in for a signed executable says of itself.
struct MachOStub {
    enum class Entitlements { xmlAndDer, xmlOnly, derOnly };

    std::string identifier = {}; ///< the signing identifier, as a rule the bundle identifier
    std::string teamID = {};     ///< empty: signed ad hoc
    std::vector<std::string> applicationGroups = {}; ///< empty: no entitlements at all
    bool universal = false;                          ///< x86_64 and arm64 slices, else arm64 alone
    std::size_t padding = 0;                         ///< bytes in place of code, per slice
    Entitlements entitlements = Entitlements::xmlAndDer;
};

/// The bytes of a Mach-O executable that carries a signature but no code. Its CodeDirectory seals nothing
/// (no code slots) and no certificate stands behind it: good for whoever reads signatures, not for running.
std::string writeMachOStub(const MachOStub& stub);

} // namespace tidwen
