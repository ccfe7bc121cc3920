#include "base/property_list.h"

#include "base/property_list_forms.h"

#include <utility>

namespace tidwen {

namespace {

using namespace std::string_view_literals;

/// The XML part: some tools write a byte-order mark or blank lines before it. nullopt when the bytes do not
/// look like XML.
std::optional<std::string_view> xmlPart(std::string_view bytes) {
    constexpr auto byteOrderMark = "\xEF\xBB\xBF"sv;
    if (bytes.starts_with("\xFE\xFF\0<"sv) || bytes.starts_with("\xFF\xFE<\0"sv)) return bytes; // UTF-16
    if (bytes.starts_with(byteOrderMark)) bytes.remove_prefix(byteOrderMark.size());
    const auto start = bytes.find_first_not_of(" \t\r\n");
    if (start == bytes.npos || bytes[start] != '<') return std::nullopt;
    return bytes.substr(start);
}

} // namespace

std::optional<bool> PropertyListValue::asBool() const {
    const auto* value = std::get_if<bool>(&storage_);
    return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::int64_t> PropertyListValue::asInteger() const {
    if (const auto* value = std::get_if<std::int64_t>(&storage_)) return *value;
    const auto* value = std::get_if<std::uint64_t>(&storage_);
    if (value && std::in_range<std::int64_t>(*value)) return static_cast<std::int64_t>(*value);
    return std::nullopt;
}

std::optional<std::vector<std::string>> PropertyListValue::asStrings() const {
    const auto* array = asArray();
    if (!array) return std::nullopt;
    std::vector<std::string> strings;
    for (const auto& element : *array) {
        const auto* string = element.asString();
        if (!string) return std::nullopt;
        strings.push_back(*string);
    }
    return strings;
}

const PropertyListValue* PropertyListValue::find(std::string_view key) const {
    const auto* dictionary = asDictionary();
    if (!dictionary) return nullptr;
    const auto found = dictionary->find(key);
    return found == dictionary->end() ? nullptr : &found->second;
}

const std::string* PropertyListValue::findString(std::string_view key) const {
    const auto* value = find(key);
    return value ? value->asString() : nullptr;
}

tl::expected<PropertyListValue, PropertyListError> parsePropertyList(std::string_view bytes,
                                                                     const PropertyListLimits& limits) {
    if (bytes.size() > limits.bytes) return tl::unexpected(PropertyListError::tooLarge);
    if (bytes.starts_with("bplist00")) return parseBinaryPropertyList(bytes, limits);
    if (const auto xml = xmlPart(bytes)) return parseXmlPropertyList(*xml, limits);
    return tl::unexpected(PropertyListError::notRecognised);
}

} // namespace tidwen
