#pragma once

#include <string>
#include <string_view>

/// Comparison and display of Unicode text. All functions take UTF-8; invalid bytes count as the replacement
/// character and are never an error.
namespace tidwen {

/// Lower-cased without language-specific rules.
std::string lowercased(std::string_view text);

/// Composed (NFC), so that a name from a file system that stores decomposed names equals a typed one.
std::string nfc(std::string_view text);

/// Composed and lower-cased: the form in which names and identifiers are compared where letter case does not
/// count.
std::string folded(std::string_view text);

/// Composed and lower-cased, reduced to letters and digits: "My-App 2" becomes "myapp2".
std::string canonicalForm(std::string_view name);

/// The key by which Mac file systems compare names: normalized, case folded ("ß" is "ss"), ignorable
/// characters (joiners, direction marks) removed. Names that any Mac file system treats as equal have equal
/// keys.
std::string fileNameKey(std::string_view name);

/// Number of code points.
std::size_t characterCount(std::string_view text);

/// Strips leading and trailing white space and line breaks.
std::string trimmed(std::string_view text);

bool isValidUtf8(std::string_view text);

/// Replaces every invalid sequence by U+FFFD; the result is always valid UTF-8.
std::string validUtf8(std::string_view text);

/// False for invisible characters: control characters (including U+0080 to U+009F), line and paragraph
/// separators, and what a text view ignores (bidirectional controls, joiners, variation selectors, tags).
bool isPrintable(char32_t c);

/// How `printable` escapes a character: "
/// " and "\u{202e}" for people, "\u202e" as in JSON.
enum class EscapeForm { visible, json };

/// Escapes everything that is not printable, so that a hostile name cannot move the cursor or hide its end.
/// Invalid sequences become U+FFFD.
std::string printable(std::string_view text, EscapeForm form = EscapeForm::visible);

/// Display order: numbers by value, letters by the rules of the given locale ("en"). Returns a negative
/// number, zero or a positive number. Texts that compare equal but differ in bytes are ordered by their
/// bytes.
int compareForDisplay(std::string_view a, std::string_view b, const std::string& locale = "en");

/// A sort key whose byte order is the order of `compareForDisplay`. For sorting long lists, where one key per
/// text costs less than repeated comparisons.
std::string displayOrderKey(std::string_view text, const std::string& locale = "en");

/// Number of terminal columns (wide characters count two, combining marks none).
std::size_t displayWidth(std::string_view text);

} // namespace tidwen
