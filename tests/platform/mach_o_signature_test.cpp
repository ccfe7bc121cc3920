#include "platform/code_signatures.h"
#include "platform/mach_o_signature.h"

#include "sample/mach_o_stub.h"
#include "support/matchers.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using Entitlements = MachOStub::Entitlements;

const std::string team = "ABCDE12345";
const std::string group = "group.com.example.notes";

/// Reads a signature from bytes and fails the test if that takes more than a few reads.
CodeSignature read(const std::string& bytes) {
    std::size_t reads = 0, total = 0;
    const auto signature = readMachOSignature([&](std::uint64_t offset, std::size_t length) {
        ++reads;
        auto part =
            offset < bytes.size() ? bytes.substr(static_cast<std::size_t>(offset), length) : std::string();
        total += part.size();
        return part;
    });
    EXPECT_LE(reads, 64u);
    EXPECT_LE(total, 64u * 8192 + bytes.size());
    return signature;
}

MachOStub notes() {
    return {.identifier = "com.example.notes", .teamID = team, .applicationGroups = {group}};
}

std::string replaced(std::string bytes, const std::string& part, const std::string& by, bool last = false) {
    const auto at = last ? bytes.rfind(part) : bytes.find(part);
    EXPECT_NE(at, bytes.npos) << part;
    return at == bytes.npos ? bytes : bytes.replace(at, part.size(), by);
}

std::string number(std::uint32_t value, bool isBigEndian) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes.insert(isBigEndian ? bytes.begin() : bytes.end(), static_cast<char>(value >> shift));
    return bytes;
}

TEST(MachOSignature, ReadsTeamAndGroupsInEveryForm) {
    const std::vector<std::string> few{"ABCDE12345.com.example.shared", "", group, "группа"};
    const std::vector<std::string> many(700,
                                        "group.com.example.a-name-of-some-length-so-that-der-lengths-grow"
                                        ".and-grow-until-they-take-more-than-two-bytes");
    for (const bool universal : {false, true})
        for (const auto form : {Entitlements::xmlAndDer, Entitlements::xmlOnly, Entitlements::derOnly})
            for (const auto& groups : {few, many, std::vector<std::string>()})
                for (const auto& teamID : {team, std::string()}) {
                    SCOPED_TRACE(testing::Message()
                                 << universal << static_cast<int>(form) << groups.size() << teamID);
                    auto expected = groups;
                    std::erase(expected, "");
                    const auto signature = read(writeMachOStub({.identifier = "com.example.notes",
                                                                .teamID = teamID,
                                                                .applicationGroups = groups,
                                                                .universal = universal,
                                                                .padding = 100'000,
                                                                .entitlements = form}));
                    EXPECT_EQ(signature.teamID.value_or(""), teamID);
                    EXPECT_EQ(signature.applicationGroups, expected);
                }
}

TEST(MachOSignature, ChoosesTheSliceAndTheBlobThatAreSound) {
    auto both = notes();
    both.universal = true;
    const auto thin = writeMachOStub(notes()), fat = writeMachOStub(both);
    const std::string intel = "INTEL12345";
    const auto different = replaced(fat, team, intel);
    EXPECT_EQ(read(different).teamID, team) << "the arm64 slice comes first";
    EXPECT_EQ(read(replaced(different, "\xcf\xfa\xed\xfe", "\xfe\xed\xfa\xcf", true)).teamID, intel)
        << "an unreadable slice does not affect the other";

    const auto codeDirectory = number(0, true) + number(12 + 4 * 8, true);
    const auto alternate = number(0x1001, true) + number(12 + 4 * 8, true);
    EXPECT_EQ(read(replaced(thin, codeDirectory, alternate)).teamID, team);
    EXPECT_THAT(read(replaced(thin, "<plist", "<plisx")).applicationGroups, ElementsAre(group))
        << "falls back to DER";
}

TEST(MachOSignature, TakesNothingThatIsNotATeamIdentifier) {
    const auto whole = writeMachOStub(notes());
    const std::string teamWithEnd = team + '\0';
    const std::pair<const char*, std::string> cases[] = {
        {"empty", replaced(whole, teamWithEnd, std::string(11, '\0'))},
        {"control characters", replaced(whole, team, "ABC\x1b[2J345")},
        {"no end before the directory's", replaced(whole, teamWithEnd, team + "6")},
        {"too long", writeMachOStub({.identifier = "com.example.notes", .teamID = std::string(65, 'A')})},
        {"a version without the field", replaced(whole, number(0x20400, true), number(0x20100, true))},
        {"a Java class", number(0xcafebabe, true) + number(0x34, true) + std::string(4096, '\x01')},
        {"big-endian code", replaced(whole, "\xcf\xfa\xed\xfe", "\xfe\xed\xfa\xcf")},
        {"a script", "#!/bin/sh\nexec true\n"},
        {"nothing", ""},
    };
    for (const auto& [why, bytes] : cases)
        EXPECT_EQ(read(bytes).teamID, std::nullopt) << why;
}

TEST(MachOSignature, DamageNeverInventsAnything) {
    for (const bool universal : {false, true}) {
        auto stub = notes();
        stub.universal = universal;
        const auto whole = writeMachOStub(stub);
        for (std::size_t kept = 0; kept < whole.size(); kept += kept < 64 || kept % 16384 < 900 ? 1 : 509) {
            SCOPED_TRACE(kept);
            const auto cut = read(whole.substr(0, kept));
            EXPECT_EQ(cut.teamID.value_or(team), team);
            EXPECT_EQ(cut.isUnreadable, kept >= 4 && cut.applicationGroups.empty());
        }
        // The slices of a universal file are thin files: only its own header is new.
        for (std::size_t at = 0; at + 4 <= (universal ? 64 : whole.size()); ++at)
            for (const std::uint32_t value :
                 {0u, 1u, 0x7fffffffu, 0xfffffff8u, 0xffffffffu, static_cast<std::uint32_t>(whole.size())})
                for (const bool isBigEndian : {false, true}) {
                    SCOPED_TRACE(testing::Message() << at << " = " << value);
                    auto bytes = whole;
                    const auto signature = read(bytes.replace(at, 4, number(value, isBigEndian)));
                    // A wrong offset yields other bytes of the file, limited to the length of a name.
                    const auto found = signature.teamID.value_or("");
                    EXPECT_LE(found.size(), 64u);
                    EXPECT_NE(bytes.find(found), bytes.npos);
                    EXPECT_THAT(signature.applicationGroups, testing::AnyOf(IsEmpty(), ElementsAre(group)));
                }
    }
}

} // namespace
} // namespace tidwen
