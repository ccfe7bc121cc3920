#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

// Apple's property lists (Info.plist, launchd's jobs, containers' records) as values, read from their XML and
// binary forms and written as XML.
class PropertyListValue;
using PropertyListArray = std::vector<PropertyListValue>;
using PropertyListDictionary = std::map<std::string, PropertyListValue, std::less<>>;

struct PropertyListData {
    std::string bytes;
    friend bool operator==(const PropertyListData&, const PropertyListData&) = default;
};

/// Seconds since 2001-01-01 00:00:00 UTC, as the format counts.
struct PropertyListDate {
    double secondsSince2001 = 0;
    friend bool operator==(const PropertyListDate&, const PropertyListDate&) = default;
};

/// A reference inside a keyed archive.
struct PropertyListUid {
    std::uint64_t value = 0;
    friend bool operator==(const PropertyListUid&, const PropertyListUid&) = default;
};

/// One value of a property list. The `as…` functions answer nothing when the value is of another type, so a
/// reader of hostile files asks for the type it wants and needs no other check.
class PropertyListValue {
  public:
    using Storage =
        std::variant<bool, std::int64_t, std::uint64_t, double, std::string, PropertyListData,
                     PropertyListDate, PropertyListUid, PropertyListArray, PropertyListDictionary>;

    PropertyListValue() : storage_(PropertyListDictionary{}) {}
    template<class T>
    requires(
        !std::is_same_v<std::remove_cvref_t<T>, PropertyListValue> && std::is_constructible_v<Storage, T>)
        PropertyListValue(T&& value) // NOLINT(bugprone-forwarding-reference-overload): constrained above
        : storage_(std::forward<T>(value)) {}
    PropertyListValue(const char* text) : storage_(std::string(text)) {}
    PropertyListValue(int number) : storage_(static_cast<std::int64_t>(number)) {}

    const Storage& storage() const { return storage_; }

    const std::string* asString() const { return std::get_if<std::string>(&storage_); }
    const PropertyListArray* asArray() const { return std::get_if<PropertyListArray>(&storage_); }
    const PropertyListDictionary* asDictionary() const {
        return std::get_if<PropertyListDictionary>(&storage_);
    }
    const PropertyListData* asData() const { return std::get_if<PropertyListData>(&storage_); }
    const PropertyListDate* asDate() const { return std::get_if<PropertyListDate>(&storage_); }
    std::optional<bool> asBool() const;
    std::optional<std::int64_t> asInteger() const;

    /// The array's elements when it is an array and every one of them is a string.
    std::optional<std::vector<std::string>> asStrings() const;

    /// The value under a key when this is a dictionary that has it.
    const PropertyListValue* find(std::string_view key) const;
    /// The string under a key; nothing when the key is absent or holds another type.
    const std::string* findString(std::string_view key) const;

    friend bool operator==(const PropertyListValue&, const PropertyListValue&) = default;

  private:
    Storage storage_;
};

enum class PropertyListError {
    tooLarge,      ///< more bytes, nodes or depth than the limits allow
    notRecognised, ///< neither the binary nor the XML form
    malformed,     ///< cut off, offsets out of range, cycles, broken XML, wrong nesting
};

/// What a reader gives up at. Shared objects of the binary form count every time they are reached, so a
/// small file cannot unfold into a large tree.
struct PropertyListLimits {
    std::size_t bytes = 32u << 20;
    std::size_t nodes = 1'000'000;
    std::size_t depth = 128;
};

/// Reads the binary form ("bplist00") or the XML form. XML entities that a document declares are not
/// expanded: such a document is malformed. White space before "<?xml" is accepted.
tl::expected<PropertyListValue, PropertyListError> parsePropertyList(std::string_view bytes,
                                                                     const PropertyListLimits& limits = {});

/// The binary form, dictionaries sorted by key: equal values give equal bytes.
std::string writeBinaryPropertyList(const PropertyListValue& value);

/// The XML form, dictionaries sorted by key, tabs for indentation.
std::string writeXmlPropertyList(const PropertyListValue& value);

} // namespace tidwen
