#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tidwen {

/// One item that a package installed.
struct BomEntry {
    std::string path; ///< relative to the install base, without a leading "./"
    bool isDirectory = false;
    std::uint32_t size = 0; ///< bytes, of a file
};

/// The bytes of a bill of materials as installers leave it beside a receipt. Folders on the way to an entry
/// are listed too, as the system's own tool does. Owner is root; checksums are left 0.
std::string writeBillOfMaterials(const std::vector<BomEntry>& entries);

} // namespace tidwen
