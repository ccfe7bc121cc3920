#include "posix/bulk_entries.h"

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace tidwen {
namespace {

template<class Number>
void put(std::string& buffer, Number value) {
    buffer.append(reinterpret_cast<const char*>(&value), sizeof value);
}

/// As the kernel packs it: the length, what follows, the values by the order of their bits, the name.
std::string entry(const std::string& name, std::uint32_t type, std::uint32_t file = BulkEntries::file,
                  std::uint32_t error = 0) {
    std::string values;
    for (const std::uint32_t group :
         {error ? BulkEntries::common : BulkEntries::common & ~0x20000000u, 0u, 0u, file, 0u})
        put(values, group);
    if (error) put(values, error);
    std::string rest;
    put(rest, std::int32_t{-7}); // device
    put(rest, type);
    put(rest, std::uint64_t{1} << 40); // inode
    if (file) put(rest, std::uint32_t{2});
    if (file) put(rest, std::uint64_t{8192});
    put(values, static_cast<std::int32_t>(8 + rest.size()));
    put(values, static_cast<std::uint32_t>(name.size() + 1));
    values += rest + name + '\0';
    values.resize((values.size() + 4 + 7) / 8 * 8 - 4);
    std::string whole;
    put(whole, static_cast<std::uint32_t>(values.size() + 4));
    return whole + values;
}

TEST(BulkEntries, AreReadAsTheKernelPacksThem) {
    const std::string buffer = entry("file", 1) + entry("folder", 2, 0) + entry("odd", 1, 1)
                               + entry("gone", 1, BulkEntries::file, 2) + entry("link", 5)
                               + std::string(100, '\0');
    BulkEntries entries(buffer);
    std::string seen;
    while (const auto each = entries.next()) {
        seen += std::string(each->name) + (each->size ? " " : "? ");
        if (!each->size) continue;
        EXPECT_EQ(each->size->device, static_cast<std::uint64_t>(-7));
        EXPECT_EQ(each->size->inode, std::uint64_t{1} << 40);
        EXPECT_EQ(each->size->links, 2u);
        EXPECT_EQ(each->size->allocatedBytes, 8192u);
    }
    EXPECT_EQ(seen, "file folder? odd? gone? link ");
}

TEST(BulkEntries, EndWhereABufferMakesNoSense) {
    const auto sound = entry("file", 1);
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const std::string cut(sound.data(), i); // its own memory, for the sanitizers
        EXPECT_FALSE(BulkEntries(cut).next()) << i;
        for (const char bad : {'\x7f', '\xff'}) {
            auto broken = sound;
            broken[i] = bad;
            BulkEntries entries(broken);
            for (int count = 0; count < 3; ++count)
                if (const auto each = entries.next()) {
                    EXPECT_LE(each->name.size(), broken.size());
                }
        }
    }
}

} // namespace
} // namespace tidwen
