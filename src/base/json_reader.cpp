#include "base/json_reader.h"

#include <algorithm>
#include <simdjson.h>
#include <utility>

namespace tidwen {

namespace dom = simdjson::dom;

namespace {

std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

/// An empty value when it is of another kind.
template<class T>
T valueAs(const dom::element& element) {
    T value{};
    return element.get(value) == simdjson::SUCCESS ? value : T{};
}

} // namespace

struct JsonReader::Document {
    /// The reader's position in an open array or object.
    struct Level {
        dom::array::iterator element, lastElement;
        dom::object::iterator member, lastMember;
        bool isBegun = false;
    };

    dom::parser parser;
    dom::element value; ///< the next value
    std::vector<Level> levels;
};

JsonReader::JsonReader(std::string_view text) : document_(std::make_unique<Document>()) {
    text = withoutByteOrderMark(text);
    text = text.substr(0, text.find('\0'));
    // The library does not count empty lists towards the depth, so `open` counts too.
    failed_ =
        document_->parser.allocate(std::max<std::size_t>(text.size(), 1), maxDepth + 1) != simdjson::SUCCESS
        || document_->parser.parse(text.data(), text.size()).get(document_->value) != simdjson::SUCCESS;
}

JsonReader::~JsonReader() = default;

JsonReader::Kind JsonReader::next() const {
    if (failed_) return Kind::none;
    switch (document_->value.type()) {
    case dom::element_type::NULL_VALUE:
        return Kind::null;
    case dom::element_type::BOOL:
        return Kind::boolean;
    case dom::element_type::INT64:
    case dom::element_type::UINT64:
    case dom::element_type::DOUBLE:
        return Kind::number;
    case dom::element_type::STRING:
        return Kind::string;
    case dom::element_type::ARRAY:
        return Kind::array;
    case dom::element_type::OBJECT:
        return Kind::object;
    }
    return Kind::none;
}

bool JsonReader::boolean() {
    return valueAs<bool>(document_->value);
}

JsonReader::Number JsonReader::number() {
    if (std::uint64_t value = 0; document_->value.get(value) == simdjson::SUCCESS) return value;
    if (std::int64_t value = 0; document_->value.get(value) == simdjson::SUCCESS) return value;
    return valueAs<double>(document_->value);
}

std::string_view JsonReader::string() {
    return valueAs<std::string_view>(document_->value);
}

void JsonReader::open() {
    Document::Level level;
    dom::array array;
    dom::object object;
    if (document_->value.get(array) == simdjson::SUCCESS) {
        level.element = array.begin();
        level.lastElement = array.end();
    } else if (document_->value.get(object) == simdjson::SUCCESS) {
        level.member = object.begin();
        level.lastMember = object.end();
    }
    document_->levels.push_back(level);
    failed_ = failed_ || document_->levels.size() > maxDepth;
}

bool JsonReader::toNextElement() {
    auto& level = document_->levels.back();
    if (std::exchange(level.isBegun, true)) ++level.element;
    if (level.element == level.lastElement) {
        document_->levels.pop_back();
        return false;
    }
    document_->value = *level.element;
    return true;
}

std::optional<std::string_view> JsonReader::toNextMember() {
    auto& level = document_->levels.back();
    if (std::exchange(level.isBegun, true)) ++level.member;
    if (level.member == level.lastMember) {
        document_->levels.pop_back();
        return std::nullopt;
    }
    document_->value = level.member.value();
    return level.member.key();
}

void JsonReader::refuseRepeated(std::size_t firstKey) {
    const auto first = keys_.begin() + static_cast<std::ptrdiff_t>(firstKey);
    std::sort(first, keys_.end());
    failed_ = failed_ || std::adjacent_find(first, keys_.end()) != keys_.end();
}

void JsonReader::skip() {
    if (next() == Kind::array) array([this] { skip(); });
    if (next() == Kind::object) object([this](std::string_view) { skip(); });
}

} // namespace tidwen
