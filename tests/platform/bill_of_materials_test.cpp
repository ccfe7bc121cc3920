#include "platform/bill_of_materials.h"

#include "sample/bill_of_materials_writer.h"
#include "support/matchers.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

std::string number(std::uint64_t value, int width = 4) {
    std::string bytes;
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>(value >> shift));
    return bytes;
}

std::string edited(std::string bytes, const std::string& part, const std::string& by) {
    const auto at = bytes.find(part);
    EXPECT_NE(at, bytes.npos);
    return at == bytes.npos ? bytes : bytes.replace(at, part.size(), by);
}

/// A name as stored: after the number of its parent, NUL-terminated.
std::string named(std::uint32_t parent, const std::string& name) {
    return number(parent) + name + '\0';
}

std::string smallBill() {
    return writeBillOfMaterials(
        {{"Applications/Notes.app", true}, {"Applications/Icon\r", false, 7}, {"été", true}});
}

TEST(BillOfMaterials, ListsEveryItemBehindTheItemsAboveIt) {
    EXPECT_THAT(
        readBillOfMaterials(smallBill()),
        Optional(ElementsAre("Applications", "été", "Applications/Icon\r", "Applications/Notes.app")));
    EXPECT_THAT(readBillOfMaterials(writeBillOfMaterials({})), Optional(IsEmpty()));
}

TEST(BillOfMaterials, FollowsTheLeavesBelowBranches) {
    std::vector<BomEntry> entries;
    std::vector<std::string> expected{"Library", "Library/Notes"};
    for (int i = 0; i < 70'000; ++i) { // two levels of branches
        expected.push_back("Library/Notes/" + std::to_string(i));
        entries.push_back({expected.back(), false, 1});
    }
    auto listed = readBillOfMaterials(writeBillOfMaterials(entries)).value_or(std::vector<std::string>());
    std::sort(expected.begin(), expected.end());
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, expected);
}

TEST(BillOfMaterials, MalformedFilesGiveNothing) {
    // Numbered depth first: "." 1, "Applications" 2, "Icon" 3, "Notes.app" 4, "été" 5.
    const auto bill = smallBill();
    const auto leaf = number(1, 2) + number(5, 2) + number(0) + number(0);
    const auto nodeBlock = 1 + 5 * 3; // after three blocks per item
    const std::pair<const char*, std::string> cases[] = {
        {"nothing", ""},
        {"another version", edited(bill, "BOMStore" + number(1), "BOMStore" + number(2))},
        {"a leaf that follows itself",
         edited(bill, leaf, number(1, 2) + number(5, 2) + number(nodeBlock) + number(0))},
        {"a branch below itself",
         edited(bill, leaf + number(2),
                number(0, 2) + number(5, 2) + number(0) + number(0) + number(nodeBlock))},
        {"an item inside itself", edited(bill, named(1, "Applications"), named(2, "Applications"))},
        {"two items inside each other", edited(bill, named(1, "Applications"), named(4, "Applications"))},
        {"a parent that is missing", edited(bill, named(1, "été"), named(77, "été"))},
        {"a name without an end", edited(bill, named(1, "été"), number(1) + "été+")},
        {"a name of several components", edited(bill, named(2, "Notes.app"), named(2, "../../etc"))},
        {"a name that leads up", edited(bill, named(1, "été"), named(1, "..") + "xx")},
        {"no tree", edited(bill, "tree", "eert")},
        {"no paths", edited(bill, "Paths", "Pathz")},
    };
    for (const auto& [why, bytes] : cases)
        EXPECT_EQ(readBillOfMaterials(bytes), std::nullopt) << why;
}

TEST(BillOfMaterials, PathsDoNotGrowWithoutBounds) {
    std::string deep;
    for (int i = 0; i < 60; ++i)
        deep += std::string(100, 'd') + "/";
    EXPECT_EQ(readBillOfMaterials(writeBillOfMaterials({{deep, true}})), std::nullopt);
    EXPECT_EQ(readBillOfMaterials(writeBillOfMaterials({{std::string(5000, 'n'), true}})), std::nullopt);
}

TEST(BillOfMaterials, DamageIsRefusedOrHarmless) {
    const auto bill = smallBill();
    const auto whole = readBillOfMaterials(bill);
    const auto tableEnd = bill.size() - 20; // the empty free list after it is optional
    for (std::size_t kept = 0; kept < bill.size(); ++kept) {
        SCOPED_TRACE(kept);
        EXPECT_EQ(readBillOfMaterials(std::string_view(bill).substr(0, kept)),
                  kept < tableEnd ? std::nullopt : whole);
    }
    for (std::size_t at = 0; at + 4 <= bill.size(); ++at)
        for (const std::uint64_t value :
             {0ul, 1ul, 2ul, 16ul, 0x7ffffffful, 0xfffffff8ul, 0xfffffffful, bill.size()}) {
            auto bytes = bill;
            bytes.replace(at, 4, number(value));
            // Every item has a unique number, so there cannot be more of them.
            EXPECT_LE(readBillOfMaterials(bytes).value_or(*whole).size(), whole->size() + 1);
        }
}

} // namespace
} // namespace tidwen
