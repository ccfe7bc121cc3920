// Files of icons: what is left of one is a whole table, and stays the same when it is reduced again.

#include "platform/icon_family.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    for (const unsigned pixels : {16U, 60U, 1024U})
        if (const auto reduced = tidwen::reducedIcon(file, pixels))
            if (reduced->size() > file.size() || tidwen::reducedIcon(*reduced, pixels) != reduced)
                std::abort();
    return 0;
}
