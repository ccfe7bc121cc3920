#include "base/json_reader.h"

#include "base/text.h"

#include <array>
#include <limits>
#include <nlohmann/json.hpp>

namespace tidwen {

namespace {

/// Bytes that stand for themselves in a string.
constexpr auto plainBytes = [] {
    std::array<bool, 256> plain{};
    for (std::size_t byte = 0x20; byte < plain.size(); ++byte)
        plain[byte] = byte != '"' && byte != '\\';
    return plain;
}();

std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

int hexValue(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/// The meaning of the mark behind a backslash; zero where it has none by itself.
char escaped(char mark) {
    switch (mark) {
    case '"':
    case '\\':
    case '/':
        return mark;
    case 'b':
        return '\b';
    case 'f':
        return '\f';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return '\0';
    }
}

void appendUtf8(std::string& text, std::uint32_t c) {
    const auto add = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (c < 0x80) return add(c);
    if (c < 0x800) {
        add(0xC0 | c >> 6);
    } else {
        if (c < 0x10000) {
            add(0xE0 | c >> 12);
        } else {
            add(0xF0 | c >> 18);
            add(0x80 | (c >> 12 & 0x3F));
        }
        add(0x80 | (c >> 6 & 0x3F));
    }
    add(0x80 | (c & 0x3F));
}

} // namespace

JsonReader::JsonReader(std::string_view text) {
    text = withoutByteOrderMark(text);
    text_ = text.substr(0, text.find('\0'));
}

char JsonReader::peekPastBlanks() {
    while (at_ < text_.size()
           && (text_[at_] == ' ' || text_[at_] == '\n' || text_[at_] == '\r' || text_[at_] == '\t'))
        ++at_;
    return peek();
}

JsonReader::Kind JsonReader::next() {
    switch (const char c = peekPastBlanks()) {
    case '{':
        return Kind::object;
    case '[':
        return Kind::array;
    case '"':
        return Kind::string;
    case 't':
    case 'f':
        return Kind::boolean;
    case 'n':
        return Kind::null;
    default:
        if (c == '-' || isDigit(c)) return Kind::number;
        fail();
        return Kind::none;
    }
}

bool JsonReader::takeWord(std::string_view word) {
    const bool isThere = text_.substr(at_).starts_with(word);
    if (isThere)
        at_ += word.size();
    else
        fail();
    return isThere;
}

void JsonReader::null() {
    takeWord("null");
}

bool JsonReader::boolean() {
    return peek() == 't' ? takeWord("true") : !takeWord("false");
}

std::size_t JsonReader::takeDigits() {
    const auto start = at_;
    while (isDigit(peek()))
        ++at_;
    return at_ - start;
}

JsonReader::Number JsonReader::number() {
    const auto start = at_;
    const bool isNegative = peek() == '-';
    if (isNegative) ++at_;
    std::uint64_t digits = 0;
    if (peek() == '0') {
        ++at_;
        digits = 1;
    } else {
        digits = takeDigits();
    }
    if (digits == 0) return fail(), Number();
    bool isWhole = true;
    if (peek() == '.') {
        isWhole = false;
        ++at_;
        if (takeDigits() == 0) return fail(), Number();
    }
    if (peek() == 'e' || peek() == 'E') {
        isWhole = false;
        ++at_;
        if (peek() == '+' || peek() == '-') ++at_;
        if (takeDigits() == 0) return fail(), Number();
    }
    const auto text = text_.substr(start, at_ - start);
    if (isWhole && !isNegative && text.size() <= std::numeric_limits<std::uint64_t>::digits10) {
        std::uint64_t value = 0;
        for (const char digit : text)
            value = value * 10 + static_cast<std::uint64_t>(digit - '0');
        return value;
    }
    // The rest is rare, and the nearest double of a text a science of its own.
    const auto value = nlohmann::json::parse(text, nullptr, false);
    if (value.is_number_unsigned()) return value.get<std::uint64_t>();
    if (value.is_number_integer()) return value.get<std::int64_t>();
    if (value.is_number_float()) return value.get<double>();
    return fail(), Number();
}

std::uint32_t JsonReader::takeCodeUnit() {
    std::uint32_t unit = 0;
    for (int i = 0; i < 4; ++i) {
        const int digit = hexValue(peek());
        if (digit < 0) return fail(), 0;
        unit = unit << 4 | static_cast<std::uint32_t>(digit);
        ++at_;
    }
    return unit;
}

/// What stands behind a backslash.
void JsonReader::appendEscaped() {
    if (const char meaning = escaped(peek())) {
        unescaped_ += meaning;
        ++at_;
        return;
    }
    if (peek() != 'u') return fail();
    ++at_;
    auto c = takeCodeUnit();
    if (c >= 0xDC00 && c <= 0xDFFF) return fail(); // the second half of nothing
    if (c >= 0xD800 && c <= 0xDBFF) {
        if (!takeWord("\\u")) return;
        const auto low = takeCodeUnit();
        if (low < 0xDC00 || low > 0xDFFF) return fail();
        c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
    }
    appendUtf8(unescaped_, c);
}

/// The string that begins here: a part of the text, or, when that has escapes, of `unescaped_`.
std::string_view JsonReader::textOfString() {
    if (!takeWord("\"")) return {};
    bool isEscaped = false;
    unsigned char bits = 0;
    unescaped_.clear();
    while (true) {
        const auto start = at_;
        while (at_ < text_.size() && plainBytes[static_cast<unsigned char>(text_[at_])])
            bits |= static_cast<unsigned char>(text_[at_++]);
        const auto run = text_.substr(start, at_ - start);
        const char mark = peek();
        if (mark != '"' && mark != '\\') return fail(), std::string_view();
        ++at_;
        if (mark == '"' && !isEscaped) {
            if (bits >= 0x80 && !isValidUtf8(run)) fail();
            return run;
        }
        unescaped_ += run;
        if (mark == '"') break;
        isEscaped = true;
        appendEscaped();
    }
    if (bits >= 0x80 && !isValidUtf8(unescaped_)) fail();
    return unescaped_;
}

std::string_view JsonReader::string() {
    return textOfString();
}

std::string_view JsonReader::key() {
    peekPastBlanks();
    auto name = textOfString();
    if (name.data() == unescaped_.data()) name = unescapedKeys_.emplace_back(name);
    if (peekPastBlanks() != ':') return fail(), name;
    ++at_;
    return name;
}

bool JsonReader::open(char bracket) {
    if (peek() != bracket || depth_ == maxDepth) return fail(), false;
    ++at_;
    ++depth_;
    return true;
}

/// Whether an element follows in a list that the bracket closes; passes what stands before it.
bool JsonReader::hasAnother(char bracket, bool isFirst) {
    const char c = peekPastBlanks();
    if (c == bracket) {
        ++at_;
        return false;
    }
    if (isFirst) return c != end || (fail(), false);
    if (c != ',') return fail(), false;
    ++at_;
    return true;
}

void JsonReader::refuseRepeated(std::size_t firstKey) {
    const auto first = keys_.begin() + static_cast<std::ptrdiff_t>(firstKey);
    std::sort(first, keys_.end());
    if (std::adjacent_find(first, keys_.end()) != keys_.end()) fail();
}

void JsonReader::skip() {
    switch (next()) {
    case Kind::null:
        return null();
    case Kind::boolean:
        return (void)boolean();
    case Kind::number:
        return (void)number();
    case Kind::string:
        return (void)string();
    case Kind::array:
        return array([this] { skip(); });
    case Kind::object:
        return object([this](std::string_view) { skip(); });
    case Kind::none:
        return;
    }
}

bool JsonReader::finish() {
    if (peekPastBlanks() != end) fail();
    return !failed_;
}

} // namespace tidwen
