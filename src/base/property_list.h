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

// Values of Apple's property lists (Info.plist, launchd jobs, container records), read from the XML and
// binary forms and written as XML or binary.
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

/// One value of a property list. The `as…` functions return nothing when the value has another type, so
/// readers of untrusted files need no other check.
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

    /// The elements of an array of strings; nullopt for anything else.
    std::optional<std::vector<std::string>> asStrings() const;

    /// The value of a key; null when this is no dictionary or lacks the key.
    const PropertyListValue* find(std::string_view key) const;
    /// The string of a key; null when the key is absent or has another type.
    const std::string* findString(std::string_view key) const;

    friend bool operator==(const PropertyListValue&, const PropertyListValue&) = default;

  private:
    Storage storage_;
};

enum class PropertyListError {
    tooLarge,      ///< more bytes, nodes or depth than the limits allow
    notRecognised, ///< neither binary nor XML
    malformed,     ///< truncated, offsets out of range, cycles, broken XML, wrong nesting
};

/// Limits of the parser. Shared objects of the binary form count each time they are referenced, so a small
/// file cannot expand into a large tree.
struct PropertyListLimits {
    std::size_t bytes = 32u << 20;
    std::size_t nodes = 1'000'000;
    std::size_t depth = 128;
};

/// Parses the binary form ("bplist00") or the XML form. XML entities declared in a document are not expanded;
/// such a document is malformed. White space before "<?xml" is accepted.
tl::expected<PropertyListValue, PropertyListError> parsePropertyList(std::string_view bytes,
                                                                     const PropertyListLimits& limits = {});

/// Writes the binary form with dictionaries sorted by key: equal values give equal bytes.
std::string writeBinaryPropertyList(const PropertyListValue& value);

/// Writes the XML form with dictionaries sorted by key, indented with tabs.
std::string writeXmlPropertyList(const PropertyListValue& value);

} // namespace tidwen
