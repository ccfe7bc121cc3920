#include "cli/console.h"

#include "base/text.h"
#include "cli/json/records.h"
#include "cli/line_layout.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

namespace tidwen {

namespace {

const char* escapeOf(Style style) {
    switch (style) {
    case Style::plain:
        return "";
    case Style::strong:
        return "\x1b[1m";
    case Style::faint:
        return "\x1b[2m";
    case Style::good:
        return "\x1b[32m";
    case Style::caution:
        return "\x1b[33m";
    case Style::danger:
        return "\x1b[31m";
    }
    return "";
}

bool isTerminal(std::FILE* file) {
    return isatty(fileno(file)) == 1;
}

std::size_t widthOf(std::FILE* terminal) {
    constexpr std::size_t usual = 80;
    winsize size{};
    return ::ioctl(fileno(terminal), TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : usual;
}

bool isSet(const char* variable) {
    const char* value = std::getenv(variable); // NOLINT(concurrency-mt-unsafe): nothing sets variables
    return value && *value;
}

bool isDumb() {
    const char* terminal = std::getenv("TERM"); // NOLINT(concurrency-mt-unsafe)
    return !terminal || std::string_view(terminal) == "dumb";
}

std::optional<std::size_t> columnsOf(std::FILE* file) {
    winsize size{};
    if (!isTerminal(file) || ::ioctl(fileno(file), TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return std::nullopt;
    return std::max<std::size_t>(size.ws_col, leastColumns);
}

std::string offered(std::FILE* file, const std::string& sentence, const std::string& command) {
    const auto columns = columnsOf(file);
    return columns ? withCommand(sentence, command, *columns) : sentence;
}

} // namespace

std::string fittedTo(std::FILE* file, const std::string& text) {
    const auto columns = columnsOf(file);
    return columns ? wrappedText(text, *columns) : text;
}

Console::Console(std::FILE* input, std::FILE* output, std::FILE* errors, Voice voice)
    : input_(input),
      output_(output),
      errors_(errors),
      inputIsTerminal_(isTerminal(input)),
      errorsAreTerminal_(isTerminal(errors)),
      showsColours_(isTerminal(output) && !isSet("NO_COLOR") && !isDumb()),
      showsProgress_(errorsAreTerminal_ && !isDumb() && voice == Voice::normal),
      voice_(voice) {}

void Console::put(std::FILE* file, std::string_view text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (!written && file == output_ && outputError_ == 0) outputError_ = errno;
}

std::string Console::painted(const StyledText& span) const {
    auto text = printable(span.text);
    if (!showsColours_ || span.style == Style::plain || text.empty()) return text;
    return escapeOf(span.style) + text + "\x1b[0m";
}

void Console::line(const std::vector<StyledText>& spans) {
    if (voice_ == Voice::quiet) return;
    endProgress();
    const auto width = columns();
    std::size_t needed = 0;
    for (const auto& span : spans)
        needed += width ? displayWidth(printable(span.text)) : 0;
    if (!width || needed <= *width) return putLine(spans);
    for (const auto& each : tidwen::wrapped(spans, *width))
        putLine(each);
}

void Console::offer(const std::string& sentence, const std::string& command) {
    if (voice_ == Voice::quiet) return;
    endProgress();
    put(output_, offered(output_, printable(sentence), printable(command)) + "\n");
}

void Console::wrapped(const std::string& text) {
    if (voice_ == Voice::quiet) return;
    endProgress();
    put(output_, fittedTo(output_, text));
}

void Console::putLine(const std::vector<StyledText>& spans) {
    std::string text;
    for (const auto& span : spans)
        text += painted(span);
    text.erase(text.find_last_not_of(' ') + 1);
    put(output_, text + "\n");
}

std::optional<std::size_t> Console::columns() const {
    return columnsOf(output_);
}

void Console::document(std::string_view text) {
    endProgress();
    hasPrintedDocument_ = true;
    put(output_, text);
}

void Console::error(std::string_view text, std::string_view key) {
    putError(fittedTo(errors_, "tidwen: " + printable(text)), text, key);
}

void Console::advise(std::string_view sentence, const std::string& command, std::string_view key) {
    putError(offered(errors_, "tidwen: " + printable(sentence), printable(command)), sentence, key);
}

void Console::putError(const std::string& line, std::string_view text, std::string_view key) {
    reported_.push_back({std::string(text), std::string(key)});
    endProgress();
    std::fflush(output_); // keeps the order of the two streams on one terminal
    put(errors_, line + "\n");
}

void Console::note(std::string_view text) {
    if (!showsNotes()) return;
    endProgress();
    std::fflush(output_); // keeps the message after the output it refers to
    put(errors_, fittedTo(errors_, printable(text)) + "\n");
}

std::size_t Console::progressColumns() const {
    return widthOf(errors_) - 1;
}

void Console::progress(std::string_view what) {
    if (!showsProgress_) return;
    put(errors_, "\r\x1b[K" + cutInMiddle(std::string(what), progressColumns()));
    std::fflush(errors_);
    progressShown_ = true;
}

void Console::endProgress() {
    if (!progressShown_) return;
    put(errors_, "\r\x1b[K");
    std::fflush(errors_);
    progressShown_ = false;
}

bool Console::ask(std::string_view question, const std::vector<std::string>& yesAnswers) {
    endProgress();
    std::fflush(output_);
    put(errors_, fittedTo(errors_, printable(question) + " "));
    std::fflush(errors_);
    std::string answer;
    for (int c = std::fgetc(input_); c != EOF && c != '\n'; c = std::fgetc(input_))
        answer.push_back(static_cast<char>(c));
    answer = lowercased(trimmed(answer));
    return std::ranges::any_of(yesAnswers, [&](const std::string& yes) {
        return answer == yes || (answer.size() == 1 && yes.starts_with(answer)); // the letter that is offered
    });
}

bool Console::finish() {
    endProgress();
    if (std::fflush(output_) != 0 && outputError_ == 0) outputError_ = errno;
    if (outputError_ != 0 && outputError_ != EPIPE)
        error("standard output: " + std::generic_category().message(outputError_));
    return outputError_ == 0;
}

} // namespace tidwen
