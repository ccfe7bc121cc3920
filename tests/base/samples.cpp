#include "samples.h"
#include "base/property_list.h"

#include <cstdint>
#include <string>

namespace tidwen::test {

using namespace std::string_literals;

std::string utf16(const std::string& ascii, bool bigEndian) {
    std::string out = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii)
        out += bigEndian ? "\0"s + c : c + "\0"s;
    return out;
}

PropertyListValue PropertyListGenerator::value(int depth) {
    const auto kind = depth > 0 ? below(4) : 3;
    if (kind == 0) {
        PropertyListArray array;
        for (auto count = entries(); count > 0; --count)
            array.push_back(value(depth - 1));
        return array;
    }
    if (kind < 3) {
        PropertyListDictionary dictionary;
        for (auto count = entries(); count > 0; --count)
            dictionary.insert_or_assign(text(), value(depth - 1));
        return dictionary;
    }
    return scalar();
}

/// Sometimes more than fourteen, the largest count that fits in a marker.
std::uint64_t PropertyListGenerator::entries() {
    return below(below(6) == 0 ? 20 : 4);
}

PropertyListValue PropertyListGenerator::scalar() {
    const auto number = random_() >> below(64); // all magnitudes
    const PropertyListValue choices[] = {
        number % 2 == 0,
        static_cast<std::int64_t>(number),
        number | std::uint64_t{1} << 63, // smaller ones are read as signed
        static_cast<double>(number) / 1024,
        PropertyListData{text()},
        PropertyListDate{static_cast<double>(below(2'000'000'000)) - 1e9},
        text(),
        PropertyListUid{number >> 33},
    };
    return choices[below(uids_ ? 8 : 7)];
}

std::string PropertyListGenerator::text() {
    static constexpr const char* letters[] = {"a", "B", "7", " ", "<", "&", ">", "\"", "\n", "é", "日", "😀"};
    std::string text;
    for (auto count = below(below(8) == 0 ? 300 : 12); count > 0; --count)
        text += letters[below(std::size(letters))];
    return text;
}

} // namespace tidwen::test
