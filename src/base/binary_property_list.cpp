#include "base/property_list.h"
#include "base/property_list_forms.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <unicode/unistr.h>
#include <vector>

// The binary form: "bplist00", the objects, a table of their offsets, and a trailer of 32 bytes with the
// position of the table and the width of its entries. All numbers are big-endian. Containers refer to objects
// by index, so a file can share objects, and a hostile one can contain cycles.

namespace tidwen {

namespace {

constexpr std::size_t headerSize = 8;
constexpr std::size_t trailerSize = 32;

using Parsed = tl::expected<PropertyListValue, PropertyListError>;

class BinaryReader {
  public:
    BinaryReader(std::string_view bytes, const PropertyListLimits& limits)
        : bytes_(bytes), limits_(limits), payloadLeft_(limits.bytes) {}

    Parsed read() {
        if (!readTrailer()) return tl::unexpected(PropertyListError::malformed);
        open_.assign(objectCount_, false);
        auto value = object(topObject_, 1);
        if (!value) return tl::unexpected(error_);
        return std::move(*value);
    }

  private:
    /// The type in an object's first bytes, and the count of bytes, characters or entries that follow.
    struct Head {
        unsigned type = 0;
        unsigned low = 0;
        std::size_t content = 0; ///< offset after marker and count
        std::uint64_t count = 0;
    };

    std::nullopt_t fail(PropertyListError error) {
        error_ = error;
        return std::nullopt;
    }
    std::nullopt_t malformed() { return fail(PropertyListError::malformed); }

    bool readTrailer() {
        if (bytes_.size() < headerSize + trailerSize) return false;
        const auto trailer = bytes_.size() - trailerSize;
        offsetSize_ = number(trailer + 6, 1);
        referenceSize_ = number(trailer + 7, 1);
        const auto objects = number(trailer + 8, 8);
        topObject_ = number(trailer + 16, 8);
        const auto table = number(trailer + 24, 8);
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) return false;
        if (table <= headerSize || table > trailer || topObject_ >= objects) return false;
        if (objects > (trailer - table) / offsetSize_) return false;
        objectCount_ = objects;
        table_ = table;
        return true;
    }

    /// `size` bytes (at most 8) as a number; the caller has checked the bounds.
    std::uint64_t number(std::size_t at, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value = value << 8 | static_cast<unsigned char>(bytes_[at + i]);
        return value;
    }

    /// Whether `count` items of `size` bytes fit at `at`: objects end where the offset table starts.
    bool fits(std::size_t at, std::uint64_t count, std::size_t size) const {
        return at <= table_ && count <= (table_ - at) / size;
    }

    std::optional<Head> head(std::uint64_t index) {
        if (index >= objectCount_) return malformed();
        const auto offset = number(table_ + index * offsetSize_, offsetSize_);
        if (offset < headerSize || offset >= table_) return malformed();
        const auto marker = number(offset, 1);
        Head head{static_cast<unsigned>(marker >> 4), static_cast<unsigned>(marker & 0xF), offset + 1,
                  marker & 0xF};
        if (head.low != 0xF || head.type < 4 || head.type == 8) return head;

        // A count above 14 follows as an integer object.
        if (!fits(head.content, 1, 1)) return malformed();
        const auto countMarker = number(head.content, 1);
        const std::size_t size = std::size_t{1} << (countMarker & 0xF);
        if (countMarker >> 4 != 1 || size > 8 || !fits(head.content + 1, 1, size)) return malformed();
        head.count = number(head.content + 1, size);
        head.content += 1 + size;
        return head;
    }

    std::optional<PropertyListValue> object(std::uint64_t index, std::size_t depth) {
        if (++nodes_ > limits_.nodes || depth > limits_.depth) return fail(PropertyListError::tooLarge);
        const auto head = this->head(index);
        if (!head) return std::nullopt;
        switch (head->type) {
        case 0x0:
            return boolean(*head);
        case 0x1:
            return integer(*head);
        case 0x2:
            return real(*head);
        case 0x3:
            return date(*head);
        case 0x4:
            return data(*head);
        case 0x5:
            return asciiString(*head);
        case 0x6:
            return utf16String(*head);
        case 0x8:
            return uid(*head);
        case 0xA:
        case 0xC:
            return container(index, *head, depth, &BinaryReader::array); // a set is read as an array
        case 0xD:
            return container(index, *head, depth, &BinaryReader::dictionary);
        default:
            return malformed();
        }
    }

    std::optional<PropertyListValue> boolean(const Head& head) {
        if (head.low != 8 && head.low != 9) return malformed();
        return PropertyListValue(head.low == 9);
    }

    std::optional<PropertyListValue> integer(const Head& head) {
        const std::size_t size = std::size_t{1} << head.low;
        if (size > 16 || !fits(head.content, 1, size)) return malformed();
        if (size < 16) return PropertyListValue(static_cast<std::int64_t>(number(head.content, size)));
        const auto high = number(head.content, 8);
        const auto low = number(head.content + 8, 8);
        const bool negative = low >> 63 != 0;
        if (high == 0 && negative) return PropertyListValue(low); // too large for a signed 64-bit number
        if (high != (negative ? ~std::uint64_t{0} : 0)) return malformed();
        return PropertyListValue(static_cast<std::int64_t>(low));
    }

    std::optional<PropertyListValue> real(const Head& head) {
        const std::size_t size = std::size_t{1} << head.low;
        if ((size != 4 && size != 8) || !fits(head.content, 1, size)) return malformed();
        const auto bits = number(head.content, size);
        if (size == 4)
            return PropertyListValue(double{std::bit_cast<float>(static_cast<std::uint32_t>(bits))});
        return PropertyListValue(std::bit_cast<double>(bits));
    }

    std::optional<PropertyListValue> date(const Head& head) {
        if (head.low != 3 || !fits(head.content, 1, 8)) return malformed();
        const auto seconds = std::bit_cast<double>(number(head.content, 8));
        if (!std::isfinite(seconds)) return malformed();
        return PropertyListValue(PropertyListDate{seconds});
    }

    std::optional<PropertyListValue> uid(const Head& head) {
        const std::size_t size = head.low + 1;
        if (size > 8 || !fits(head.content, 1, size)) return malformed();
        return PropertyListValue(PropertyListUid{number(head.content, size)});
    }

    /// The bytes of a string or of data. Each reference counts; otherwise a long string referenced a million
    /// times would exhaust memory.
    std::optional<std::string_view> payload(const Head& head, std::size_t unit) {
        if (!fits(head.content, head.count, unit)) return malformed();
        const auto size = head.count * unit;
        if (size > payloadLeft_) return fail(PropertyListError::tooLarge);
        payloadLeft_ -= size;
        return bytes_.substr(head.content, size);
    }

    std::optional<PropertyListValue> data(const Head& head) {
        const auto bytes = payload(head, 1);
        if (!bytes) return std::nullopt;
        return PropertyListValue(PropertyListData{std::string(*bytes)});
    }

    std::optional<PropertyListValue> asciiString(const Head& head) {
        const auto bytes = payload(head, 1);
        if (!bytes) return std::nullopt;
        for (const char c : *bytes)
            if (static_cast<unsigned char>(c) >= 0x80) return malformed();
        return PropertyListValue(std::string(*bytes));
    }

    std::optional<PropertyListValue> utf16String(const Head& head) {
        const auto bytes = payload(head, 2);
        if (!bytes) return std::nullopt;
        icu::UnicodeString units;
        for (std::size_t i = 0; i < head.count; ++i)
            units.append(static_cast<char16_t>(number(head.content + 2 * i, 2)));
        std::string text;
        return PropertyListValue(std::move(units.toUTF8String(text))); // a lone surrogate becomes U+FFFD
    }

    using ReadEntries = std::optional<PropertyListValue> (BinaryReader::*)(const Head&, std::size_t);

    /// Marks the container as open while its entries are read: reaching an open container again is a cycle.
    std::optional<PropertyListValue> container(std::uint64_t index, const Head& head, std::size_t depth,
                                               ReadEntries readEntries) {
        if (open_[index]) return malformed();
        open_[index] = true;
        auto value = (this->*readEntries)(head, depth);
        open_[index] = false;
        return value;
    }

    std::uint64_t reference(std::size_t base, std::uint64_t position) const {
        return number(base + position * referenceSize_, referenceSize_);
    }

    std::optional<PropertyListValue> array(const Head& head, std::size_t depth) {
        if (!fits(head.content, head.count, referenceSize_)) return malformed();
        PropertyListArray elements;
        for (std::uint64_t i = 0; i < head.count; ++i) {
            auto element = object(reference(head.content, i), depth + 1);
            if (!element) return std::nullopt;
            elements.push_back(std::move(*element));
        }
        return PropertyListValue(std::move(elements));
    }

    std::optional<PropertyListValue> dictionary(const Head& head, std::size_t depth) {
        if (!fits(head.content, head.count, 2 * referenceSize_)) return malformed();
        PropertyListDictionary members;
        for (std::uint64_t i = 0; i < head.count; ++i) {
            const auto key = object(reference(head.content, i), depth + 1);
            if (!key) return std::nullopt;
            if (!key->asString()) return malformed();
            auto member = object(reference(head.content, head.count + i), depth + 1);
            if (!member) return std::nullopt;
            // Of a duplicate key the last value counts, in both forms.
            members.insert_or_assign(*key->asString(), std::move(*member));
        }
        return PropertyListValue(std::move(members));
    }

    std::string_view bytes_;
    const PropertyListLimits& limits_;
    std::size_t payloadLeft_;
    std::size_t nodes_ = 0;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t topObject_ = 0;
    std::size_t table_ = 0;
    std::vector<bool> open_;
    PropertyListError error_ = PropertyListError::malformed;
};

} // namespace

Parsed parseBinaryPropertyList(std::string_view bytes, const PropertyListLimits& limits) {
    return BinaryReader(bytes, limits).read();
}

} // namespace tidwen
