#include "base/property_list.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <unicode/unistr.h>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

void appendNumber(std::string& out, std::uint64_t value, std::size_t size) {
    for (std::size_t i = size; i-- > 0;)
        out += static_cast<char>(value >> (8 * i) & 0xFF);
}

/// 0, 1, 2 or 3 for a number that takes 1, 2, 4 or 8 bytes.
unsigned sizeExponent(std::uint64_t value) {
    if (value <= 0xFF) return 0;
    if (value <= 0xFFFF) return 1;
    return value <= 0xFFFFFFFF ? 2 : 3;
}

std::size_t sizeOf(std::uint64_t value) {
    return std::size_t{1} << sizeExponent(value);
}

std::string integerObject(std::uint64_t value) {
    std::string out(1, static_cast<char>(0x10 | sizeExponent(value)));
    appendNumber(out, value, sizeOf(value));
    return out;
}

std::string markerWithCount(unsigned type, std::size_t count) {
    std::string out(1, static_cast<char>(type << 4 | std::min<std::size_t>(count, 0xF)));
    if (count >= 0xF) out += integerObject(count);
    return out;
}

std::string doubleObject(unsigned marker, double value) {
    std::string out(1, static_cast<char>(marker));
    appendNumber(out, std::bit_cast<std::uint64_t>(value), 8);
    return out;
}

std::string stringObject(const std::string& text) {
    const bool ascii = std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x80; });
    if (ascii) return markerWithCount(0x5, text.size()) + text;
    const auto units = icu::UnicodeString::fromUTF8(text); // invalid bytes become U+FFFD
    const auto count = units.length();
    auto out = markerWithCount(0x6, static_cast<std::size_t>(count));
    for (std::int32_t i = 0; i < count; ++i)
        appendNumber(out, units.charAt(i), 2);
    return out;
}

/// Numbers the objects depth first and keeps the bytes of each, with references as numbers until the end,
/// because their width depends on the number of objects.
class BinaryWriter {
  public:
    std::string write(const PropertyListValue& value) {
        add(value);
        const auto referenceSize = sizeOf(objects_.size() - 1);
        std::string out = "bplist00";
        std::vector<std::size_t> offsets;
        for (const auto& object : objects_) {
            offsets.push_back(out.size());
            out += object.bytes;
            for (const auto reference : object.references)
                appendNumber(out, reference, referenceSize);
        }
        const auto table = out.size();
        const auto offsetSize = sizeOf(table);
        for (const auto offset : offsets)
            appendNumber(out, offset, offsetSize);
        out.append(6, '\0');
        appendNumber(out, offsetSize, 1);
        appendNumber(out, referenceSize, 1);
        appendNumber(out, objects_.size(), 8);
        appendNumber(out, 0, 8); // the top object
        appendNumber(out, table, 8);
        return out;
    }

  private:
    struct Object {
        std::string bytes;
        std::vector<std::size_t> references;
    };

    std::size_t add(const PropertyListValue& value) {
        return std::visit([this](const auto& held) { return addHeld(held); }, value.storage());
    }

    std::size_t append(std::string bytes) {
        objects_.push_back({std::move(bytes), {}});
        return objects_.size() - 1;
    }

    std::size_t addHeld(bool value) { return append(std::string(1, value ? '\x09' : '\x08')); }
    std::size_t addHeld(std::int64_t value) {
        return append(integerObject(static_cast<std::uint64_t>(value)));
    }
    std::size_t addHeld(std::uint64_t value) {
        if (std::in_range<std::int64_t>(value)) return append(integerObject(value));
        // With eight bytes it would be read as a negative number.
        std::string bytes(1, '\x14');
        appendNumber(bytes, 0, 8);
        appendNumber(bytes, value, 8);
        return append(std::move(bytes));
    }
    std::size_t addHeld(double value) { return append(doubleObject(0x23, value)); }
    std::size_t addHeld(const PropertyListData& data) {
        return append(markerWithCount(0x4, data.bytes.size()) + data.bytes);
    }
    std::size_t addHeld(const PropertyListDate& date) {
        // No reader accepts a date that is not a finite number.
        return append(doubleObject(0x33, std::isfinite(date.secondsSince2001) ? date.secondsSince2001 : 0));
    }
    std::size_t addHeld(const PropertyListUid& uid) {
        const auto size = sizeOf(uid.value);
        std::string bytes(1, static_cast<char>(0x80 | (size - 1)));
        appendNumber(bytes, uid.value, size);
        return append(std::move(bytes));
    }
    /// Equal strings are written once, because keys repeat in every list of dictionaries.
    std::size_t addHeld(const std::string& text) {
        const auto [known, isNew] = strings_.try_emplace(text, objects_.size());
        if (isNew) append(stringObject(text));
        return known->second;
    }
    std::size_t addHeld(const PropertyListArray& array) {
        const auto index = append(markerWithCount(0xA, array.size()));
        std::vector<std::size_t> references;
        for (const auto& element : array)
            references.push_back(add(element));
        objects_[index].references = std::move(references);
        return index;
    }
    std::size_t addHeld(const PropertyListDictionary& dictionary) {
        const auto index = append(markerWithCount(0xD, dictionary.size()));
        std::vector<std::size_t> references;
        for (const auto& [key, member] : dictionary)
            references.push_back(addHeld(key));
        for (const auto& [key, member] : dictionary)
            references.push_back(add(member));
        objects_[index].references = std::move(references);
        return index;
    }

    std::vector<Object> objects_;
    std::map<std::string, std::size_t, std::less<>> strings_;
};

} // namespace

std::string writeBinaryPropertyList(const PropertyListValue& value) {
    return BinaryWriter().write(value);
}

} // namespace tidwen
