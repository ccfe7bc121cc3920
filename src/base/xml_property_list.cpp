#include "base/property_list.h"
#include "base/property_list_forms.h"

#include "base/base64.h"
#include "base/timestamp.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <expat.h>
#include <limits>
#include <locale>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

namespace {

using Parsed = std::optional<PropertyListValue>;

constexpr std::string_view whiteSpace = " \t\r\n";

std::string_view withoutWhiteSpace(std::string_view text) {
    const auto start = text.find_first_not_of(whiteSpace);
    if (start == text.npos) return {};
    return text.substr(start, text.find_last_not_of(whiteSpace) + 1 - start);
}

/// "12", "-12", "+12", "0x1F".
Parsed parseInteger(std::string_view text) {
    text = withoutWhiteSpace(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) text.remove_prefix(2);

    std::uint64_t magnitude = 0;
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, magnitude, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end) return std::nullopt;
    constexpr auto lowest = std::uint64_t{1} << 63;
    if (negative) {
        if (magnitude > lowest) return std::nullopt;
        return PropertyListValue(static_cast<std::int64_t>(-magnitude));
    }
    if (magnitude >= lowest) return PropertyListValue(magnitude);
    return PropertyListValue(static_cast<std::int64_t>(magnitude));
}

/// A stream, because the decimal mark must be the point in every locale.
Parsed parseReal(std::string_view text) {
    text = withoutWhiteSpace(text);
    constexpr auto infinity = std::numeric_limits<double>::infinity();
    if (text == "nan") return PropertyListValue(std::numeric_limits<double>::quiet_NaN());
    if (text == "+infinity" || text == "infinity") return PropertyListValue(infinity);
    if (text == "-infinity") return PropertyListValue(-infinity);
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    double value = 0;
    if (!(stream >> std::noskipws >> value) || stream.peek() != std::istringstream::traits_type::eof())
        return std::nullopt;
    return PropertyListValue(value);
}

Parsed parseDate(std::string_view text) {
    text = withoutWhiteSpace(text);
    const auto moment = text.ends_with('Z') ? parseIso8601(text) : std::nullopt;
    if (!moment) return std::nullopt;
    constexpr std::chrono::sys_days epoch = std::chrono::year(2001) / 1 / 1;
    return PropertyListValue(PropertyListDate{static_cast<double>((*moment - epoch).count())});
}

Parsed parseData(std::string_view text) {
    auto bytes = decodeBase64(text);
    if (!bytes) return std::nullopt;
    return PropertyListValue(PropertyListData{std::move(*bytes)});
}

/// A keyed archive in XML stores a reference as a dictionary with only this key.
PropertyListValue dictionaryOrUid(PropertyListDictionary members) {
    const auto uid = members.find("CF$UID");
    if (members.size() == 1 && uid != members.end()) {
        const auto number = uid->second.asInteger();
        if (number && *number >= 0) return PropertyListUid{static_cast<std::uint64_t>(*number)};
    }
    return members;
}

/// Builds the value from expat's events. The first error stops the parser.
class XmlReader {
  public:
    explicit XmlReader(const PropertyListLimits& limits) : limits_(limits) {}

    tl::expected<PropertyListValue, PropertyListError> read(std::string_view bytes) {
        if (bytes.size() > std::numeric_limits<int>::max())
            return tl::unexpected(PropertyListError::tooLarge);
        const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                                  &XML_ParserFree);
        if (!parser) return tl::unexpected(PropertyListError::tooLarge);
        parser_ = parser.get();
        XML_SetUserData(parser_, this);
        XML_SetElementHandler(parser_, onStart, onEnd);
        XML_SetCharacterDataHandler(parser_, onText);
        // Only the five predefined entities are expanded: a declaration is an error, and so is a name that
        // only the external subset, which is never loaded, could declare.
        XML_SetEntityDeclHandler(parser_, [](void* self, const char*, int, const char*, int, const char*,
                                             const char*, const char*, const char*) { reader(self).fail(); });
        XML_SetSkippedEntityHandler(parser_, [](void* self, const char*, int) { reader(self).fail(); });

        // In one piece, because expat would rescan a long token with every further piece.
        const auto status = XML_Parse(parser_, bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
        if (error_) return tl::unexpected(*error_);
        if (status != XML_STATUS_OK || !root_) return tl::unexpected(PropertyListError::malformed);
        return std::move(*root_);
    }

  private:
    /// An open element: the root, a container, or a scalar whose text is collected.
    struct Open {
        std::string name;
        PropertyListArray array;
        PropertyListDictionary dictionary;
        std::optional<std::string> key; ///< in a dictionary: read, its value still to come
    };

    static XmlReader& reader(void* self) { return *static_cast<XmlReader*>(self); }
    static void onStart(void* self, const char* name, const char**) { reader(self).start(name); }
    static void onEnd(void* self, const char*) { reader(self).end(); }
    static void onText(void* self, const char* text, int size) {
        reader(self).text({text, static_cast<std::size_t>(size)});
    }

    void fail(PropertyListError error = PropertyListError::malformed) {
        if (error_) return;
        error_ = error;
        XML_StopParser(parser_, XML_FALSE);
    }

    static bool isContainer(std::string_view name) {
        return name == "dict" || name == "array" || name == "plist";
    }

    static bool isScalar(std::string_view name) {
        for (const auto* known : {"string", "integer", "real", "true", "false", "date", "data", "key"})
            if (name == known) return true;
        return false;
    }

    /// Whether an element of this name is allowed at this point.
    bool isAllowed(std::string_view name) const {
        if (open_.empty()) return name == "plist";
        if (name == "plist" || (!isContainer(name) && !isScalar(name))) return false;
        const auto& parent = open_.back();
        if (parent.name == "dict") return (name == "key") == !parent.key;
        if (name == "key") return false;
        return parent.name == "array" || (parent.name == "plist" && !root_);
    }

    void start(std::string_view name) {
        if (error_) return;
        if (!isAllowed(name)) return fail();
        // The root element is not a value.
        if (name != "plist" && (++nodes_ > limits_.nodes || open_.size() > limits_.depth))
            return fail(PropertyListError::tooLarge);
        open_.push_back({std::string(name), {}, {}, {}});
        text_.clear();
    }

    void text(std::string_view text) {
        if (error_) return;
        if (!open_.empty() && isScalar(open_.back().name))
            text_ += text;
        else if (text.find_first_not_of(whiteSpace) != text.npos)
            fail();
    }

    void end() {
        if (error_) return;
        auto closed = std::move(open_.back());
        open_.pop_back();
        if (closed.name == "plist") return;
        if (closed.name == "key") {
            open_.back().key = std::move(text_);
            return;
        }
        if (closed.key) return fail(); // a key without a value
        auto value = valueOf(closed);
        if (!value) return fail();
        place(std::move(*value));
    }

    Parsed valueOf(Open& closed) {
        if (closed.name == "dict") return dictionaryOrUid(std::move(closed.dictionary));
        if (closed.name == "array") return PropertyListValue(std::move(closed.array));
        if (closed.name == "string") return PropertyListValue(std::move(text_));
        if (closed.name == "integer") return parseInteger(text_);
        if (closed.name == "real") return parseReal(text_);
        if (closed.name == "date") return parseDate(text_);
        if (closed.name == "data") return parseData(text_);
        if (!withoutWhiteSpace(text_).empty()) return std::nullopt;
        return PropertyListValue(closed.name == "true");
    }

    void place(PropertyListValue value) {
        auto& parent = open_.back();
        if (parent.name == "array") {
            parent.array.push_back(std::move(value));
        } else if (parent.name == "dict") {
            // Of a duplicate key the last value counts, in both forms.
            parent.dictionary.insert_or_assign(std::move(*parent.key), std::move(value));
            parent.key.reset();
        } else {
            root_ = std::move(value);
        }
    }

    const PropertyListLimits& limits_;
    XML_Parser parser_ = nullptr;
    std::vector<Open> open_;
    std::string text_;
    std::size_t nodes_ = 0;
    Parsed root_;
    std::optional<PropertyListError> error_;
};

} // namespace

tl::expected<PropertyListValue, PropertyListError> parseXmlPropertyList(std::string_view bytes,
                                                                        const PropertyListLimits& limits) {
    return XmlReader(limits).read(bytes);
}

} // namespace tidwen
