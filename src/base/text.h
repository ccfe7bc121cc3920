#pragma once

#include <string>
#include <string_view>

/// Unicode text as people compare it. Everything here takes UTF-8; bytes that are not valid UTF-8 count as
/// the replacement character and never make a function fail.
namespace tidwen {

/// Lower-cased by the rules of no particular language.
std::string lowercased(std::string_view text);

/// Composed (NFC), so that a name from a disk that stores decomposed names equals the typed one.
std::string composed(std::string_view text);

/// Composed, lower-cased, and only its letters and numbers: "My-App 2" becomes "myapp2".
std::string canonicalForm(std::string_view name);

/// What a Mac's disks compare file names by: one normal form, letter case folded ("ß" is "ss"), the marks
/// that they pass over (joiners, direction marks) left out. Names that some disk takes for one give one key.
std::string fileNameKey(std::string_view name);

/// Number of code points.
std::size_t characterCount(std::string_view text);

/// Without leading and trailing white space and line breaks.
std::string trimmed(std::string_view text);

bool isValidUtf8(std::string_view text);

/// The text with every invalid sequence replaced by U+FFFD; always valid UTF-8.
std::string validUtf8(std::string_view text);

/// False for what a reader does not see but a terminal or a text view obeys: control characters (U+0080 to
/// U+009F too), marks that change the direction of text, line and paragraph separators, the byte-order mark.
bool isPrintable(char32_t c);

/// How `printable` writes what is not: "\n" and "\u{202e}" for people, "\u202e" as JSON has it.
enum class EscapeForm { visible, json };

/// The text with everything escaped that is not printable, so that a hostile name cannot move the cursor or
/// hide its end. Invalid sequences become U+FFFD.
std::string printable(std::string_view text, EscapeForm form = EscapeForm::visible);

/// The order of a list that a person reads: numbers by value, letters by the given locale ("en").
/// Negative, zero or positive. Equal texts that differ in bytes are ordered by their bytes.
int compareForDisplay(std::string_view a, std::string_view b, const std::string& locale = "en");

/// Bytes in whose order texts stand as `compareForDisplay` orders them: for sorting long lists, where making
/// one key for each text costs less than comparing them again and again.
std::string displayOrderKey(std::string_view text, const std::string& locale = "en");

/// Columns of a terminal that the text takes (wide letters count two, combining marks none).
std::size_t displayWidth(std::string_view text);

} // namespace tidwen
