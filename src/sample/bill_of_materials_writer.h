#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tidwen {

/// One item installed by a package.
struct BomEntry {
    std::string path; ///< relative to the install base, without a leading "./"
    bool isDirectory = false;
    std::uint32_t size = 0; ///< in bytes, for a file
};

/// The bytes of a bill of materials as an installer stores it with a receipt. Like the system's own tool,
/// also lists the parent folders of each entry. The owner is root; checksums are 0.
std::string writeBillOfMaterials(const std::vector<BomEntry>& entries);

} // namespace tidwen
