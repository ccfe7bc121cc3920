#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tidwen {

/// The signature data of a stand-in for a signed executable.
struct MachOStub {
    enum class Entitlements { xmlAndDer, xmlOnly, derOnly };

    std::string identifier = {}; ///< the signing identifier, usually the bundle identifier
    std::string teamID = {};     ///< empty: signed ad hoc
    std::vector<std::string> applicationGroups = {}; ///< empty: no entitlements
    bool universal = false;                          ///< x86_64 and arm64 slices; otherwise only arm64
    std::size_t padding = 0;                         ///< bytes in place of code, per slice
    Entitlements entitlements = Entitlements::xmlAndDer;
};

/// The bytes of a Mach-O executable with a signature but no code. Its CodeDirectory covers nothing (no code
/// slots) and there is no certificate: enough for reading signatures, not for running.
std::string writeMachOStub(const MachOStub& stub);

} // namespace tidwen
