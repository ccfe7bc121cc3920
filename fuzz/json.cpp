// JSON documents: what is read can be written, and reads as the same again.

#include "base/json.h"

#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto value = tidwen::parseJson({reinterpret_cast<const char*>(data), size});
    if (!value) return 0;
    if (tidwen::parseJson(tidwen::writeJson(*value)) != *value) std::abort();
    return 0;
}
