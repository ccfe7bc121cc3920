#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// What a piece of a line means, shown by colour and weight where the terminal can.
enum class Style { plain, strong, faint, good, caution, danger };

/// A piece of a line. Text that came from outside is made harmless when it is printed.
struct StyledText {
    std::string text;
    Style style = Style::plain;
    friend bool operator==(const StyledText&, const StyledText&) = default;
};

/// A line about what went wrong, with the key of its words where that is known.
struct ErrorText {
    std::string text;
    std::string key = {};
};

/// The text as it fits the terminal that `file` is; as it stands when it is none.
std::string fittedTo(std::FILE* file, const std::string& text);

/// The terminal, or what stands in its place: a pipe or a file. Results go to standard output; questions,
/// errors and progress to standard error. Used by one thread.
class Console {
  public:
    /// `Quiet`: of results nothing is printed but documents, and nothing beside them but errors.
    enum class Voice { normal, quiet };
    Console(std::FILE* input, std::FILE* output, std::FILE* errors, Voice voice = Voice::normal);

    /// One line of styled pieces, control characters in them made visible. Where standard output is a
    /// terminal that is narrower it becomes several (line_layout.h).
    void line(const std::vector<StyledText>& spans);
    /// One that stays as it is, so that a command in it can be copied.
    void verbatim(const std::string& text);
    /// Of the terminal that standard output is, at least `leastColumns`; nothing when it is none.
    std::optional<std::size_t> columns() const;
    void line(std::string text, Style style = Style::plain) { line({StyledText{std::move(text), style}}); }
    void blankLine() { line(std::vector<StyledText>{}); }
    /// A document, or a piece of one, as it stands.
    void document(std::string_view text);
    bool hasPrintedDocument() const { return hasPrintedDocument_; }

    /// "tidwen: " and the text, on standard error. `key`: of the words, where it is known.
    void error(std::string_view text, std::string_view key = {});
    /// The same for a line with a command to copy, which stays whole.
    void advise(std::string_view text);
    /// Every error so far.
    const std::vector<ErrorText>& errors() const { return reported_; }

    /// Somebody sees notes: standard error is a terminal.
    bool showsNotes() const { return errorsAreTerminal_ && voice_ == Voice::normal; }
    /// A line beside the results, on standard error; only on a terminal.
    void note(std::string_view text);

    /// Shows what is being done on a line that the next one overwrites, cut to the width; only on a terminal.
    void progress(std::string_view what);
    /// From now on none is shown: whoever asks for a document reads no lines.
    void hideProgress() { showsProgress_ = false; }
    void endProgress();

    /// One whose lines go to standard error, for what a person must see while standard output is a
    /// document's.
    Console onErrors() const { return {input_, errors_, errors_}; }

    /// There is a person who can answer.
    bool canAsk() const { return inputIsTerminal_; }
    /// Prints the question and waits for a line; true when it is one of `yesAnswers` (letter case ignored).
    bool ask(std::string_view question, const std::vector<std::string>& yesAnswers);

    /// Flushes. False, with an error message, when something could not be written, as on a full disk. A
    /// reader that went away ("| head") is no error.
    bool finish();

  private:
    void put(std::FILE* file, std::string_view text);
    void putError(const std::string& line, std::string_view text, std::string_view key);
    void putLine(const std::vector<StyledText>& spans);
    std::string painted(const StyledText& span) const;

    std::FILE* input_;
    std::FILE* output_;
    std::FILE* errors_;
    bool inputIsTerminal_ = false;
    bool errorsAreTerminal_ = false;
    bool showsColours_ = false;
    bool showsProgress_ = false;
    bool progressShown_ = false;
    bool hasPrintedDocument_ = false;
    Voice voice_;
    std::vector<ErrorText> reported_;
    int outputError_ = 0; ///< errno of the first failed write to standard output
};

} // namespace tidwen
