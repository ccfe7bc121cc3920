// Compares the readers and writers with another implementation of the formats.

#include "base/property_list.h"

#include "samples.h"

#include <gtest/gtest.h>
#include <memory>
#include <plist/plist.h>

namespace tidwen {
namespace {

using Other = std::unique_ptr<void, void (*)(plist_t)>;

Other readByOther(const std::string& bytes) {
    plist_t list = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &list);
    return {list, plist_free};
}

using WriteByOther = decltype(&plist_to_bin);

std::string writtenByOther(plist_t list, WriteByOther write) {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    write(list, &bytes, &size);
    const std::string copy(bytes ? bytes : "", size);
    free(bytes);
    return copy;
}

// Without references: the other one reads their XML form as dictionaries.
TEST(PropertyListOracle, AgreesWithAnotherImplementation) {
    for (unsigned seed = 1000; seed < 1200; ++seed) {
        SCOPED_TRACE(seed);
        const auto value = test::PropertyListGenerator(seed, false).value();
        for (const auto& ours : {writeBinaryPropertyList(value), writeXmlPropertyList(value)}) {
            const auto other = readByOther(ours);
            ASSERT_TRUE(other);
            ASSERT_EQ(parsePropertyList(writtenByOther(other.get(), plist_to_bin)), value);
            ASSERT_EQ(parsePropertyList(writtenByOther(other.get(), plist_to_xml)), value);
        }
    }
}

} // namespace
} // namespace tidwen
