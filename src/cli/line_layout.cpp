#include "cli/line_layout.h"

#include "base/text.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace tidwen {

namespace {

/// The offsets of the code points.
std::vector<std::size_t> starts(const std::string& text) {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < text.size(); ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) result.push_back(i);
    result.push_back(text.size());
    return result;
}

bool isOneOf(std::string_view characters, const std::string& character) {
    return characters.find(character) != characters.npos;
}

/// Whether a line may end between two characters of a word: beside one of East Asian writing, which has no
/// spaces, but not before closing punctuation, small kana or the long vowel mark, nor after opening
/// punctuation.
bool mayBreakBetween(const std::string& before, const std::string& after) {
    if (displayWidth(before) < 2 && displayWidth(after) < 2) return false;
    constexpr std::string_view closing =
        "、。，．・：；？！」』）】〉》〕］｝〙〗ーゝゞ々ぁぃぅぇぉっゃゅょゎ"
        "ァィゥェォッャュョヮヵヶ…‥—～％’”.,:;?!)]}%";
    constexpr std::string_view opening = "「『（【〈《〔［｛〘〖‘“([{";
    return displayWidth(after) > 0 && !isOneOf(closing, after) && !isOneOf(opening, before);
}

/// The parts of a word between which a line may end.
std::vector<std::string> partsOf(const std::string& word) {
    const auto at = starts(word);
    std::vector<std::string> parts;
    std::string before;
    for (std::size_t i = 0; i + 1 < at.size(); ++i) {
        auto character = word.substr(at[i], at[i + 1] - at[i]);
        if (parts.empty() || mayBreakBetween(before, character))
            parts.push_back(character); // NOLINT(performance-inefficient-vector-operation)
        else
            parts.back() += character;
        before = std::move(character);
    }
    return parts;
}

/// An unbreakable piece, and the spaces before it within a line.
struct Piece {
    std::size_t blanks = 0;
    std::string text;
    Style style = Style::plain;
};

/// Whether a word continues the last piece: without a space between them both are one.
bool continues(const std::vector<Piece>& pieces, std::size_t blanks, Style style, const std::string& word) {
    if (blanks > 0 || pieces.empty() || pieces.back().style != style) return false;
    const auto& last = pieces.back().text;
    const auto at = starts(last);
    return !mayBreakBetween(last.substr(at[at.size() - 2]), word.substr(0, starts(word)[1]));
}

/// Where the unbreakable piece ends that begins there: a word, a path as far as an arrow leads from it to
/// another, or that arrow with the word behind it.
std::size_t endOfPiece(const std::string& text, std::size_t begin) {
    constexpr std::string_view arrow = "-> ";
    if (text[begin] == '/') return std::min(text.find(" -> ", begin), text.find_last_not_of(' ') + 1);
    const auto word = text.compare(begin, arrow.size(), arrow) == 0 ? begin + arrow.size() : begin;
    return std::min(text.find(' ', word), text.size());
}

/// Adds the words of a span, or a path as one piece. Returns the number of trailing spaces.
std::size_t addPieces(const StyledText& span, std::size_t blanks, std::vector<Piece>& pieces) {
    const auto text = printable(span.text);
    for (std::size_t at = 0; at < text.size();) {
        const auto begin = std::min(text.find_first_not_of(' ', at), text.size());
        blanks += begin - at;
        if (begin == text.size()) break;
        const bool isPath = text[begin] == '/';
        const auto end = endOfPiece(text, begin);
        const auto word = text.substr(begin, end - begin);
        const auto parts = isPath || word.starts_with("-> ") ? std::vector{word} : partsOf(word);
        for (const auto& part : parts) {
            if (continues(pieces, blanks, span.style, part))
                pieces.back().text += part;
            else
                pieces.push_back({blanks, part, span.style});
            blanks = 0;
        }
        at = end;
    }
    return blanks;
}

} // namespace

std::string cutInMiddle(const std::string& text, std::size_t columns) {
    auto shown = printable(text);
    if (displayWidth(shown) <= columns) return shown;
    const auto at = starts(shown);
    std::size_t head = 0, tail = at.size() - 1; // of code points that are kept
    const auto joined = [&](std::size_t h, std::size_t t) {
        return shown.substr(0, at[h]) + "…" + shown.substr(at[t]);
    };
    // The end of a path says more than its beginning, so it gets the first code point.
    for (bool isTail = true; head < tail; isTail = !isTail) {
        const auto h = head + (isTail ? 0 : 1), t = tail - (isTail ? 1 : 0);
        if (displayWidth(joined(h, t)) > columns) break;
        head = h;
        tail = t;
    }
    return joined(head, tail);
}

namespace {

/// Fills lines with words.
class WrappedLine {
  public:
    explicit WrappedLine(std::size_t columns) : columns_(columns), indentation_(columns / 10) {}
    /// Continues a line behind `head`, which takes `indentation` columns; so much are the next ones indented.
    WrappedLine(std::size_t columns, std::string head, std::size_t indentation)
        : columns_(columns),
          indentation_(indentation),
          column_(indentation),
          isFirst_(false),
          text_(std::move(head)) {}

    void add(const std::string& word) {
        if (word.empty()) return addPart(word, true);
        bool isFirst = true;
        for (const auto& part : partsOf(word))
            addPart(part, std::exchange(isFirst, false));
    }
    std::string take() { return std::move(text_); }

  private:
    void addPart(const std::string& word, bool isBegin) {
        const bool isWithin = column_ > indentation_ || (isFirst_ && column_ > 0);
        const auto blanks = isBegin && isWithin ? 1u : 0u;
        if (column_ + blanks + displayWidth(word) <= columns_) return put(std::string(blanks, ' '), word);
        if (isWithin) end();
        const auto at = starts(word);
        for (std::size_t i = 0; i + 1 < at.size(); ++i) {
            const auto letter = word.substr(at[i], at[i + 1] - at[i]);
            if (column_ + displayWidth(letter) > columns_) end();
            put("", letter);
        }
    }

    void put(const std::string& blanks, std::string_view word) {
        text_ += blanks;
        text_ += word;
        column_ += blanks.size() + displayWidth(word);
    }
    void end() {
        text_ += "\n" + std::string(indentation_, ' ');
        column_ = indentation_;
        isFirst_ = false;
    }

    std::size_t columns_, indentation_, column_ = 0;
    bool isFirst_ = true; ///< the line is, and not behind a head
    std::string text_;
};

std::string filled(WrappedLine wrapped, std::string_view line) {
    for (std::size_t at = 0; at < line.size();) {
        const auto end = std::min(line.find(' ', at), line.size());
        wrapped.add(std::string(line.substr(at, end - at)));
        at = end + 1;
    }
    // An answer is typed after it.
    return wrapped.take() + (line.ends_with(' ') ? " " : "");
}

/// Where the second column of a table's row begins: an indented term, two or more spaces and its meaning.
std::optional<std::size_t> secondColumn(std::string_view line) {
    if (!line.starts_with("  ")) return std::nullopt;
    const auto gap = line.find("  ", std::min(line.find_first_not_of(' '), line.size()));
    const auto begin = gap == line.npos ? gap : line.find_first_not_of(' ', gap);
    return begin == line.npos ? std::nullopt : std::optional(begin);
}

/// The second column is wrapped in itself. Where it gets less than half of the width it stands below the
/// term, in every row of the table, because all rows have it in the same place.
std::string wrappedRow(std::string_view line, std::size_t second, std::size_t columns) {
    constexpr std::size_t narrow = 4;
    auto head = std::string(line.substr(0, second));
    const auto width = displayWidth(head);
    const auto meaning = line.substr(second);
    if (width <= columns / 2) return filled({columns, std::move(head), width}, meaning);
    head.erase(head.find_last_not_of(' ') + 1);
    if (displayWidth(head) > columns) head = filled(WrappedLine(columns), head);
    return filled({columns, head + "\n" + std::string(narrow, ' '), narrow}, meaning);
}

std::string wrappedLine(std::string_view line, std::size_t columns) {
    if (const auto second = secondColumn(line)) return wrappedRow(line, *second, columns);
    return displayWidth(line) <= columns ? std::string(line) : filled(WrappedLine(columns), line);
}

} // namespace

std::string wrappedText(const std::string& text, std::size_t columns) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const auto end = std::min(text.find('\n', at), text.size());
        result += wrappedLine(std::string_view(text).substr(at, end - at), columns);
        if (end < text.size()) result += '\n';
        at = end + 1;
    }
    return result;
}

std::string withCommand(const std::string& sentence, const std::string& command, std::size_t columns) {
    if (displayWidth(sentence) <= columns || !sentence.ends_with(command)) return sentence;
    auto words = sentence.substr(0, sentence.size() - command.size());
    words.erase(words.find_last_not_of(' ') + 1);
    return (words.empty() ? "" : wrappedText(words, columns) + "\n") + "  " + command;
}

std::vector<std::vector<StyledText>> wrapped(const std::vector<StyledText>& line, std::size_t columns) {
    std::vector<Piece> pieces;
    std::size_t blanks = 0;
    for (const auto& span : line)
        blanks = addPieces(span, blanks, pieces);
    std::vector<std::vector<StyledText>> lines(1);
    if (pieces.empty()) return lines;
    const auto indentation = std::min(pieces.front().blanks + 4, columns / 4);
    std::size_t column = 0;
    for (auto& [before, text, style] : pieces) {
        const bool isFirst = lines.size() == 1 && column == 0;
        if (!isFirst && column + before + displayWidth(text) > columns) {
            lines.emplace_back();
            column = 0;
            before = indentation;
        }
        // Only what is longer than a line is cut.
        before = std::min(before, columns / 2);
        if (column == 0 && displayWidth(text) <= columns)
            before = std::min(before, columns - displayWidth(text));
        text = cutInMiddle(text, columns - column - before);
        column += before + displayWidth(text);
        lines.back().push_back({std::string(before, ' ')});
        lines.back().push_back({std::move(text), style});
    }
    return lines;
}

} // namespace tidwen
