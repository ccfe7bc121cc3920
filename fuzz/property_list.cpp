// Both forms of property lists: whatever is read can be written in either form and reads back equal.

#include "base/property_list.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace tidwen;

/// Compares by bytes, so that a NaN equals itself.
void requireEqual(const PropertyListValue& a, const PropertyListValue& b) {
    if (writeBinaryPropertyList(a) != writeBinaryPropertyList(b)) std::abort();
}

PropertyListValue readAgain(const std::string& bytes) {
    // Replacing invalid units by U+FFFD, and indentation, enlarge the second file.
    const auto value = parsePropertyList(bytes, {.bytes = 1u << 30, .nodes = 1'000'000, .depth = 256});
    if (!value) std::abort();
    return *value;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto value = parsePropertyList(bytes, {.bytes = 1u << 20, .nodes = 20'000, .depth = 64});
    if (!value) return 0;
    requireEqual(*value, readAgain(writeBinaryPropertyList(*value)));
    // The XML form has no control characters and no fractions of seconds, so the second round is compared.
    const auto viaXml = readAgain(writeXmlPropertyList(*value));
    requireEqual(viaXml, readAgain(writeXmlPropertyList(viaXml)));
    requireEqual(viaXml, readAgain(writeBinaryPropertyList(viaXml)));
    return 0;
}
