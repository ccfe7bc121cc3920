#include "platform/entitlements.h"

#include "base/property_list.h"
#include "base/text.h"
#include "platform/byte_reader.h"

#include <algorithm>
#include <cstdint>

namespace tidwen {

namespace {

constexpr std::string_view groupsKey = "com.apple.security.application-groups";
constexpr std::uint32_t xmlMagic = 0xfade7171;
constexpr std::uint32_t derMagic = 0xfade7172;

constexpr std::uint8_t tagUtf8String = 0x0c;
constexpr std::uint8_t tagSequence = 0x30;
constexpr std::uint8_t tagEntitlements = 0x70;
constexpr std::uint8_t tagDictionary = 0xb0;

std::optional<std::string_view> payload(std::string_view bytes, std::uint32_t magic) {
    const ByteReader blob(bytes);
    const auto length = blob.big32(4);
    if (blob.big32(0) != magic || !length || *length < 8) return std::nullopt;
    return blob.slice(8, *length - 8);
}

std::vector<std::string> withoutEmpty(std::vector<std::string> groups) {
    std::erase(groups, std::string());
    return groups;
}

struct Element {
    std::uint8_t tag = 0;
    std::string_view content;
};

/// Removes the first element from `rest`. A length below 128 takes one byte, others up to four after a count.
std::optional<Element> nextElement(std::string_view& rest) {
    const ByteReader in(rest);
    const auto tag = in.byte(0);
    const auto first = in.byte(1);
    if (!tag || !first) return std::nullopt;
    std::uint64_t length = *first;
    std::uint64_t begin = 2;
    if (*first >= 0x80) {
        const unsigned width = *first & 0x7f;
        if (width < 1 || width > 4) return std::nullopt;
        length = 0;
        for (unsigned i = 0; i < width; ++i) {
            const auto digit = in.byte(begin++);
            if (!digit) return std::nullopt;
            length = length << 8 | *digit;
        }
    }
    const auto content = in.slice(begin, length);
    if (!content) return std::nullopt;
    rest.remove_prefix(static_cast<std::size_t>(begin + length));
    return Element{*tag, *content};
}

std::vector<std::string> stringsOf(const Element& array) {
    std::vector<std::string> strings;
    auto rest = array.content;
    while (array.tag == tagSequence && !rest.empty()) {
        const auto element = nextElement(rest);
        if (!element || element->tag != tagUtf8String || !isValidUtf8(element->content)) return {};
        strings.emplace_back(element->content);
    }
    return strings;
}

} // namespace

ApplicationGroups groupsFromXmlEntitlements(std::string_view bytes) {
    constexpr PropertyListLimits limits{.bytes = maxEntitlementBytes, .nodes = 100'000, .depth = 64};
    const auto list = parsePropertyList(payload(bytes, xmlMagic).value_or(bytes), limits);
    if (!list || !list->asDictionary()) return std::nullopt;
    const auto* groups = list->find(groupsKey);
    return withoutEmpty(groups ? groups->asStrings().value_or(std::vector<std::string>())
                               : std::vector<std::string>());
}

ApplicationGroups groupsFromDerEntitlements(std::string_view bytes) {
    auto rest = payload(bytes, derMagic).value_or("");
    const auto outer = nextElement(rest);
    if (!outer || outer->tag != tagEntitlements) return std::nullopt;
    rest = outer->content;
    if (!nextElement(rest)) return std::nullopt; // the version
    const auto dictionary = nextElement(rest);
    if (!dictionary || dictionary->tag != tagDictionary) return std::nullopt;

    for (rest = dictionary->content; !rest.empty();) {
        const auto entry = nextElement(rest);
        if (!entry) return std::nullopt;
        auto pair = entry->content;
        const auto key = nextElement(pair);
        if (!key || key->tag != tagUtf8String || key->content != groupsKey) continue;
        const auto value = nextElement(pair);
        return withoutEmpty(value ? stringsOf(*value) : std::vector<std::string>());
    }
    return std::vector<std::string>();
}

} // namespace tidwen
