// Bills of materials: every path stays below the package's install location.

#include "platform/bill_of_materials.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto paths = tidwen::readBillOfMaterials({reinterpret_cast<const char*>(data), size});
    if (!paths) return 0;
    for (const auto& path : *paths) {
        const auto framed = "/" + path + "/";
        if (path.empty() || path.find('\0') != path.npos || framed.find("//") != framed.npos
            || framed.find("/../") != framed.npos)
            std::abort();
    }
    return 0;
}
