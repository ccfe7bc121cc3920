#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tidwen {

/// Reads a JSON document from front to back and makes no tree of it, so that long lists of records go
/// straight into them. The caller looks at `next` and takes each value once, in any way; what is not wanted
/// is skipped, and checked like everything else.
///
/// Refused are a malformed document, invalid UTF-8, one of more than 64 levels, a number that no double
/// holds, and a key that stands twice in an object. After that there is no next value, lists end, and what
/// was taken counts for nothing: ask `finish` before using it.
class JsonReader {
  public:
    static constexpr std::size_t maxDepth = 64;

    enum class Kind { null, boolean, number, string, array, object, none };
    /// The first that can hold it: whole numbers without a sign, with one, all others.
    using Number = std::variant<std::uint64_t, std::int64_t, double>;

    /// The text must stay where it is as long as the reader. A byte-order mark before it is passed over, and
    /// a zero byte ends it.
    explicit JsonReader(std::string_view text);
    JsonReader(const JsonReader&) = delete;
    JsonReader& operator=(const JsonReader&) = delete;

    /// What stands next; `none` when nothing can be taken any more.
    Kind next();

    // Each takes the next value, which must be of that kind.
    void null();
    bool boolean();
    Number number();
    std::string_view string(); ///< valid until the next string is taken
    /// Calls `onElement()` before each element, which it must take.
    template<class OnElement>
    void array(OnElement onElement) {
        if (!open('[')) return;
        for (bool isFirst = true; hasAnother(']', isFirst); isFirst = false)
            onElement();
        --depth_;
    }
    /// Calls `onMember(key)` before the value of each member, which it must take.
    template<class OnMember>
    void object(OnMember onMember) {
        if (!open('{')) return;
        const auto firstKey = keys_.size();
        bool areAscending = true;
        for (bool isFirst = true; hasAnother('}', isFirst); isFirst = false) {
            const auto name = key();
            areAscending = areAscending && (isFirst || keys_.back() < name);
            keys_.push_back(name);
            if (!failed_) onMember(name);
        }
        // As Tidwen writes them, in ascending order, none can stand twice.
        if (!areAscending) refuseRepeated(firstKey);
        keys_.resize(firstKey);
        --depth_;
    }
    /// Takes the next value, whatever it is.
    void skip();

    /// True when nothing was refused and nothing but blanks is left.
    bool finish();

  private:
    static constexpr char end = '\0'; ///< the text holds none

    char peek() const { return at_ < text_.size() ? text_[at_] : end; }
    char peekPastBlanks();
    bool open(char bracket);
    bool hasAnother(char bracket, bool isFirst);
    std::string_view key(); ///< valid as long as the reader
    void refuseRepeated(std::size_t firstKey);

    bool takeWord(std::string_view word);
    std::size_t takeDigits();
    std::string_view textOfString();
    void appendEscaped();
    std::uint32_t takeCodeUnit();

    void fail() {
        failed_ = true;
        at_ = text_.size();
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t depth_ = 0;
    bool failed_ = false;
    std::string unescaped_;                 ///< the last string, when it does not stand so in the text
    std::vector<std::string_view> keys_;    ///< of the open objects, the innermost last
    std::deque<std::string> unescapedKeys_; ///< what `keys_` points at when it is not the text
};

} // namespace tidwen
