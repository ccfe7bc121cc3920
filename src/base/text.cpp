#include "base/text.h"

#include <algorithm>
#include <cstdint>
#include <fmt/core.h>
#include <map>
#include <memory>
#include <numeric>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/coll.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>
#include <vector>

namespace tidwen {

namespace {

constexpr char32_t replacement = 0xFFFD;

/// Checks all bytes without an early exit, so that the compiler can vectorize it.
bool isAscii(std::string_view text) {
    const auto bits = std::accumulate(text.begin(), text.end(), 0u, [](unsigned all, char c) {
        return all | static_cast<unsigned char>(c);
    });
    return bits < 0x80;
}

char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

icu::StringPiece piece(std::string_view text) {
    return icu::StringPiece(text.data(), static_cast<int32_t>(text.size()));
}

/// Decodes the code point at `at` and advances `at`; negative for an invalid sequence.
UChar32 decodeNext(std::string_view text, std::int64_t& at) {
    UChar32 c = 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion" // inside the library's macro
    U8_NEXT(text.data(), at, static_cast<std::int64_t>(text.size()), c);
#pragma GCC diagnostic pop
    return c;
}

/// Calls `visit` with every code point and its bytes; an invalid sequence is one U+FFFD.
template<class Visit>
void forEachCodePoint(std::string_view text, Visit visit) {
    for (std::int64_t at = 0; at < static_cast<std::int64_t>(text.size());) {
        const auto start = at;
        const auto c = decodeNext(text, at);
        const auto bytes = text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(at - start));
        visit(c < 0 ? replacement : static_cast<char32_t>(c), bytes, c >= 0);
    }
}

void append(std::string& text, char32_t c) {
    char bytes[U8_MAX_LENGTH];
    std::int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, static_cast<UChar32>(c));
    text.append(bytes, static_cast<std::size_t>(length));
}

bool changesDirectionOrLine(char32_t c) {
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x200E || c == 0x200F
           || c == 0x061C || c == 0x2028 || c == 0x2029;
}

std::string escaped(char32_t c, EscapeForm form) {
    const auto code = static_cast<std::uint32_t>(c);
    if (form == EscapeForm::json)
        return code < 0x10000 ? fmt::format("\\u{:04x}", code)
                              : fmt::format("\\u{:04x}\\u{:04x}", static_cast<std::uint32_t>(U16_LEAD(code)),
                                            static_cast<std::uint32_t>(U16_TRAIL(code)));
    switch (c) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return fmt::format("\\u{{{:x}}}", static_cast<std::uint32_t>(c));
    }
}

/// Whether the invisible character belongs to the emoji it follows: the selector of its coloured form, or the
/// joiner between two emoji that are one picture.
bool isPartOfEmoji(const std::vector<char32_t>& text, std::size_t at) {
    constexpr char32_t joiner = 0x200D, colouredForm = 0xFE0F;
    const auto has = [&](std::size_t where, UProperty property) {
        return where < text.size() && u_hasBinaryProperty(static_cast<UChar32>(text[where]), property);
    };
    const auto isEmoji = [&](std::size_t where) { return has(where, UCHAR_EXTENDED_PICTOGRAPHIC); };
    if (text[at] == colouredForm) return at > 0 && isEmoji(at - 1);
    if (text[at] != joiner || !isEmoji(at + 1)) return false;
    const std::size_t base = at >= 2 && text[at - 1] == colouredForm ? at - 2 : at - 1;
    return at > 0 && (isEmoji(base) || has(base, UCHAR_EMOJI_MODIFIER));
}

/// A collator is expensive to create and not thread-safe, so each thread keeps its own.
const icu::Collator* collatorFor(const std::string& locale) {
    thread_local std::map<std::string, std::unique_ptr<icu::Collator>> collators;
    const auto found = collators.find(locale);
    if (found != collators.end()) return found->second.get();
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> made(
        icu::Collator::createInstance(icu::Locale::forLanguageTag(locale.c_str(), status), status));
    if (U_FAILURE(status)) made.reset();
    if (made) made->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    return collators.emplace(locale, std::move(made)).first->second.get();
}

int sign(std::ptrdiff_t difference) {
    return difference < 0 ? -1 : difference > 0 ? 1 : 0;
}

} // namespace

std::string lowercased(std::string_view text) {
    std::string result;
    if (isAscii(text)) {
        result = text;
        std::transform(result.begin(), result.end(), result.begin(), asciiLower);
        return result;
    }
    result.reserve(text.size());
    UErrorCode status = U_ZERO_ERROR;
    icu::StringByteSink<std::string> sink(&result);
    icu::CaseMap::utf8ToLower("", 0, piece(validUtf8(text)), sink, nullptr, status);
    return result;
}

std::string nfc(std::string_view text) {
    if (isAscii(text)) return std::string(text);
    UErrorCode status = U_ZERO_ERROR;
    const auto* form = icu::Normalizer2::getNFCInstance(status);
    auto valid = validUtf8(text);
    if (U_FAILURE(status)) return valid;
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    form->normalizeUTF8(0, piece(valid), sink, nullptr, status);
    return result;
}

std::string folded(std::string_view text) {
    return lowercased(nfc(text));
}

std::string canonicalForm(std::string_view name) {
    std::string result;
    result.reserve(name.size());
    if (isAscii(name)) {
        for (const char c : name)
            if ((c >= '0' && c <= '9') || (asciiLower(c) >= 'a' && asciiLower(c) <= 'z'))
                result += asciiLower(c);
        return result;
    }
    forEachCodePoint(folded(name), [&](char32_t c, std::string_view bytes, bool) {
        const auto mask = U_GET_GC_MASK(static_cast<UChar32>(c));
        if ((mask & (U_GC_L_MASK | U_GC_N_MASK)) != 0) result += bytes;
    });
    return result;
}

std::string fileNameKey(std::string_view name) {
    if (isAscii(name)) return lowercased(name);
    std::string kept;
    forEachCodePoint(nfc(name), [&](char32_t c, std::string_view bytes, bool) {
        if (!u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_DEFAULT_IGNORABLE_CODE_POINT)) kept += bytes;
    });
    std::string folded;
    UErrorCode status = U_ZERO_ERROR;
    icu::StringByteSink<std::string> sink(&folded);
    icu::CaseMap::utf8Fold(0, piece(kept), sink, nullptr, status);
    return nfc(folded);
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    forEachCodePoint(text, [&](char32_t, std::string_view, bool) { ++count; });
    return count;
}

std::string trimmed(std::string_view text) {
    std::size_t start = text.size();
    std::size_t end = 0;
    forEachCodePoint(text, [&](char32_t c, std::string_view bytes, bool) {
        if (u_isUWhiteSpace(static_cast<UChar32>(c))) return;
        const auto at = static_cast<std::size_t>(bytes.data() - text.data());
        start = std::min(start, at);
        end = at + bytes.size();
    });
    return end > start ? std::string(text.substr(start, end - start)) : std::string();
}

bool isValidUtf8(std::string_view text) {
    if (isAscii(text)) return true;
    for (std::int64_t at = 0; at < static_cast<std::int64_t>(text.size());)
        if (decodeNext(text, at) < 0) return false;
    return true;
}

std::string validUtf8(std::string_view text) {
    if (isValidUtf8(text)) return std::string(text);
    std::string result;
    result.reserve(text.size());
    forEachCodePoint(text, [&](char32_t c, std::string_view, bool) { append(result, c); });
    return result;
}

bool isPrintable(char32_t c) {
    if (c < 0x20 || (c >= 0x7F && c < 0xA0) || changesDirectionOrLine(c)) return false;
    // Two names that differ only in such characters would look alike.
    return c < 0xA0 || !u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_DEFAULT_IGNORABLE_CODE_POINT);
}

std::string printable(std::string_view text, EscapeForm form) {
    if (std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; }))
        return std::string(text);
    std::vector<char32_t> characters;
    forEachCodePoint(text, [&](char32_t c, std::string_view, bool) { characters.push_back(c); });
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < characters.size(); ++i)
        if (isPrintable(characters[i]) || (form == EscapeForm::visible && isPartOfEmoji(characters, i)))
            append(result, characters[i]);
        else
            result += escaped(characters[i], form);
    return result;
}

int compareForDisplay(std::string_view a, std::string_view b, const std::string& locale) {
    if (const auto* collator = collatorFor(locale)) {
        UErrorCode status = U_ZERO_ERROR;
        const auto order = collator->compareUTF8(piece(a), piece(b), status);
        if (U_SUCCESS(status) && order != UCOL_EQUAL) return order == UCOL_LESS ? -1 : 1;
    }
    return sign(a.compare(b));
}

std::string displayOrderKey(std::string_view text, const std::string& locale) {
    std::string key;
    if (const auto* collator = collatorFor(locale)) {
        const auto unicode = icu::UnicodeString::fromUTF8(piece(text));
        const auto write = [&] {
            return collator->getSortKey(unicode, reinterpret_cast<std::uint8_t*>(key.data()),
                                        static_cast<std::int32_t>(key.size()));
        };
        key.resize(text.size() * 2 + 32); // enough for most texts; the call returns the length needed
        const auto length = static_cast<std::size_t>(write());
        const bool fits = length <= key.size();
        key.resize(length);
        if (!fits) write();
    }
    return key.append(text); // the collator's part is NUL-terminated and contains no other NUL
}

std::size_t displayWidth(std::string_view text) {
    std::size_t columns = 0;
    forEachCodePoint(text, [&](char32_t c, std::string_view, bool) {
        const auto code = static_cast<UChar32>(c);
        const auto noColumns = U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK | U_GC_CC_MASK;
        const auto hangul = u_getIntPropertyValue(code, UCHAR_HANGUL_SYLLABLE_TYPE);
        if ((U_GET_GC_MASK(code) & noColumns) != 0 || hangul == U_HST_VOWEL_JAMO
            || hangul == U_HST_TRAILING_JAMO)
            return;
        const auto width = u_getIntPropertyValue(code, UCHAR_EAST_ASIAN_WIDTH);
        columns += width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
    });
    return columns;
}

} // namespace tidwen
