#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The meaning of a piece of a line, shown by color and weight if the terminal supports it.
enum class Style { plain, strong, faint, good, caution, danger };

/// A piece of a line. Untrusted text is made safe when it is printed.
struct StyledText {
    std::string text;
    Style style = Style::plain;
    friend bool operator==(const StyledText&, const StyledText&) = default;
};

/// An error message, with its text key if known.
struct ErrorText {
    std::string text;
    std::string key = {};
};

/// The text wrapped for the terminal of `file`; unchanged if it is no terminal.
std::string fittedTo(std::FILE* file, const std::string& text);

/// The terminal, or a pipe or file in its place. Results go to standard output; questions, errors and
/// progress to standard error. Not thread-safe.
class Console {
  public:
    /// `quiet`: of results only documents are printed, of messages only errors.
    enum class Voice { normal, quiet };
    Console(std::FILE* input, std::FILE* output, std::FILE* errors, Voice voice = Voice::normal);

    /// Prints a line of styled pieces with control characters made visible, wrapped if standard output is a
    /// narrower terminal (line_layout.h).
    void line(const std::vector<StyledText>& spans);
    /// Prints a sentence that ends with a command to copy, which is neither wrapped nor cut: on a terminal
    /// too narrow for both it stands on a line of its own.
    void offer(const std::string& sentence, const std::string& command);
    /// The width of the terminal on standard output, at least `leastColumns`; absent if it is no terminal.
    std::optional<std::size_t> columns() const;
    void line(std::string text, Style style = Style::plain) { line({StyledText{std::move(text), style}}); }
    void blankLine() { line(std::vector<StyledText>{}); }
    /// Prints lines of prose, wrapped like `line` but with their indentation.
    void wrapped(const std::string& text);
    /// Prints a document, or a part of one, unchanged.
    void document(std::string_view text);
    bool hasPrintedDocument() const { return hasPrintedDocument_; }

    /// Prints "tidwen: " and the text on standard error. `key`: the text's key, if known.
    void error(std::string_view text, std::string_view key = {});
    /// The same for a sentence that ends with a command to copy, as `offer` prints it.
    void advise(std::string_view sentence, const std::string& command, std::string_view key);
    /// All errors so far.
    const std::vector<ErrorText>& errors() const { return reported_; }

    /// Whether notes are visible: standard error is a terminal.
    bool showsNotes() const { return errorsAreTerminal_ && voice_ == Voice::normal; }
    /// Prints a message on standard error; only on a terminal.
    void note(std::string_view text);

    /// Shows the current activity on a line that the next one overwrites, cut in its middle to the width;
    /// only on a terminal.
    void progress(std::string_view what);
    /// The longest line that `progress` shows whole.
    std::size_t progressColumns() const;
    /// Disables progress, as for documents.
    void hideProgress() { showsProgress_ = false; }
    void endProgress();

    /// A console that prints its lines on standard error, for messages beside a document on standard output.
    Console onErrors() const { return {input_, errors_, errors_}; }

    /// Whether someone can answer a question.
    bool canAsk() const { return inputIsTerminal_; }
    /// Prints the question and waits for a line; true when it is one of `yesAnswers`, ignoring case.
    bool ask(std::string_view question, const std::vector<std::string>& yesAnswers);

    /// Flushes. False, with an error message, when something could not be written, as on a full disk. A
    /// closed pipe ("| head") is no error.
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
