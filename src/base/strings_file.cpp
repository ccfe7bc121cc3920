#include "base/strings_file.h"

#include "base/property_list.h"
#include "base/text.h"

#include <algorithm>
#include <charconv>
#include <unicode/unistr.h>
#include <unicode/utf16.h>
#include <utility>

namespace tidwen {

namespace {

using namespace std::string_view_literals;
using Words = std::map<std::string, std::string>;

constexpr std::size_t maxBytes = 32u << 20;

/// The text as UTF-8, without the byte-order mark.
std::string decoded(std::string_view bytes) {
    const bool bigEndian = bytes.starts_with("\xFE\xFF"sv);
    if (!bigEndian && !bytes.starts_with("\xFF\xFE"sv)) {
        if (bytes.starts_with("\xEF\xBB\xBF"sv)) bytes.remove_prefix(3);
        return validUtf8(bytes);
    }
    icu::UnicodeString units;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        units.append(static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first));
    }
    std::string text;
    return std::move(units.toUTF8String(text));
}

/// Collects a quoted string. Escapes denote UTF-16 units, so a character outside the basic plane takes two; a
/// unit without its other half becomes U+FFFD.
class QuotedText {
  public:
    void add(std::string_view utf8) {
        if (utf8.empty()) return;
        endCharacter();
        text_ += utf8;
    }
    void addUnit(unsigned unit) {
        if (U16_IS_TRAIL(unit) && first_ != 0)
            return append(static_cast<unsigned>(U16_GET_SUPPLEMENTARY(std::exchange(first_, 0), unit)));
        endCharacter();
        if (U16_IS_LEAD(unit))
            first_ = unit;
        else
            append(U16_IS_TRAIL(unit) ? replacement : unit);
    }
    std::string utf8() {
        endCharacter();
        return std::move(text_);
    }

  private:
    static constexpr unsigned replacement = 0xFFFD;

    void endCharacter() {
        if (std::exchange(first_, 0) != 0) append(replacement);
    }
    void append(unsigned character) {
        icu::UnicodeString(static_cast<UChar32>(character)).toUTF8String(text_);
    }

    std::string text_;
    unsigned first_ = 0; ///< the first unit of a character whose second is expected; 0: none
};

class StringsParser {
  public:
    explicit StringsParser(std::string_view text) : text_(text) {}

    std::optional<Words> parse() {
        Words words;
        for (;;) {
            if (!skipSpace()) return std::nullopt;
            if (at_ == text_.size()) return words;
            auto key = token();
            if (!key || !skipSpace()) return std::nullopt;
            // `"key";` is short for `"key" = "key";`.
            auto value = take('=') ? valueToken() : key;
            if (!value || !skipSpace() || !take(';')) return std::nullopt;
            words.insert_or_assign(std::move(*key), std::move(*value));
        }
    }

  private:
    bool take(char c) {
        if (at_ >= text_.size() || text_[at_] != c) return false;
        ++at_;
        return true;
    }

    std::string_view rest() const { return text_.substr(at_); }

    /// Skips white space and comments; false when a comment does not end.
    bool skipSpace() {
        for (;;) {
            at_ = std::min(text_.find_first_not_of(" \t\r\n\v\f", at_), text_.size());
            if (rest().starts_with("//")) {
                at_ = std::min(text_.find_first_of("\r\n", at_), text_.size());
            } else if (rest().starts_with("/*")) {
                const auto end = text_.find("*/", at_ + 2);
                if (end == text_.npos) return false;
                at_ = end + 2;
            } else {
                return true;
            }
        }
    }

    std::optional<std::string> valueToken() {
        if (!skipSpace()) return std::nullopt;
        return token();
    }

    std::optional<std::string> token() {
        if (take('"')) return quoted('"');
        if (take('\'')) return quoted('\'');
        return bareWord();
    }

    /// Unquoted words are common as keys: CFBundleName = "…";
    std::optional<std::string> bareWord() {
        const auto start = at_;
        while (at_ < text_.size() && isBare(text_[at_]))
            ++at_;
        if (at_ == start) return std::nullopt;
        return std::string(text_.substr(start, at_ - start));
    }

    static bool isBare(char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'
               || c == '$' || c == '.' || c == '-' || c == '/' || c == ':';
    }

    std::optional<std::string> quoted(char quote) {
        QuotedText content;
        const char stops[] = {quote, '\\'};
        for (;;) {
            const auto end = text_.find_first_of(std::string_view(stops, 2), at_);
            if (end == text_.npos) return std::nullopt;
            content.add(text_.substr(at_, end - at_));
            at_ = end + 1;
            if (text_[end] == quote) return content.utf8();
            if (!escape(content)) return std::nullopt;
        }
    }

    /// Reads what follows a backslash. An unknown letter stands for itself.
    bool escape(QuotedText& content) {
        if (at_ >= text_.size()) return false;
        const char c = text_[at_];
        if (c >= '0' && c <= '7') return numbered(content, 3, 8, false);
        const auto character = wholeCharacter();
        if (c == 'U' || c == 'u') return numbered(content, 4, 16, true);
        constexpr auto letters = "abfnrtv"sv;
        constexpr auto meanings = "\a\b\f\n\r\t\v"sv;
        const auto letter = letters.find(c);
        content.add(letter == letters.npos ? character : meanings.substr(letter, 1));
        return true;
    }

    /// Reads a unit of at most `digits` digits, or of exactly that many.
    bool numbered(QuotedText& content, std::size_t digits, int base, bool exactly) {
        unsigned unit = 0;
        const auto part = text_.substr(at_, digits);
        const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), unit, base);
        const auto length = static_cast<std::size_t>(end - part.data());
        if (error != std::errc() || (exactly && length != digits)) return false;
        content.addUnit(unit);
        at_ += length;
        return true;
    }

    std::string_view wholeCharacter() {
        const auto start = at_++;
        while (at_ < text_.size() && (static_cast<unsigned char>(text_[at_]) & 0xC0) == 0x80)
            ++at_;
        return text_.substr(start, at_ - start);
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

/// Skips entries that are not text (plural rules in a compiled file).
std::optional<Words> stringsOf(const PropertyListValue& list) {
    const auto* dictionary = list.asDictionary();
    if (!dictionary) return std::nullopt;
    Words words;
    for (const auto& [key, value] : *dictionary)
        if (const auto* text = value.asString()) words.emplace(key, *text);
    return words;
}

} // namespace

std::optional<Words> parseStringsFile(std::string_view bytes) {
    if (bytes.size() > maxBytes) return std::nullopt;
    const auto list = parsePropertyList(bytes);
    if (list) return stringsOf(*list);
    if (list.error() != PropertyListError::notRecognised) return std::nullopt;
    const auto text = decoded(bytes);
    return StringsParser(text).parse();
}

} // namespace tidwen
