#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tidwen {

/// Hands out a JSON document from front to back, so that long lists of records go straight into them. The
/// caller looks at `next` and takes each value once, in any way; what is not wanted is skipped.
///
/// Refused are a malformed document, invalid UTF-8, one of more than 64 levels, a number that neither 64 bits
/// nor a double holds, and a key that stands twice in an object. There is no next value then, and what was
/// taken before counts for nothing: ask `finish` before using it.
class JsonReader {
  public:
    static constexpr std::size_t maxDepth = 64;

    enum class Kind { null, boolean, number, string, array, object, none };
    /// The first that can hold it: whole numbers without a sign, with one, all others.
    using Number = std::variant<std::uint64_t, std::int64_t, double>;

    /// Reads the text, which need not stay. A byte-order mark before it is passed over, and a zero byte ends
    /// it.
    explicit JsonReader(std::string_view text);
    ~JsonReader();
    JsonReader(const JsonReader&) = delete;
    JsonReader& operator=(const JsonReader&) = delete;

    /// What stands next; `none` when nothing can be taken any more.
    Kind next() const;

    // Each takes the next value, which must be of that kind.

    bool boolean();
    Number number();
    std::string_view string(); ///< valid as long as the reader
    /// Calls `onElement()` before each element, which it may take.
    template<class OnElement>
    void array(OnElement onElement) {
        for (open(); toNextElement();)
            onElement();
    }
    /// Calls `onMember(key)` before the value of each member, which it may take.
    template<class OnMember>
    void object(OnMember onMember) {
        const auto firstKey = keys_.size();
        bool areAscending = true;
        for (open(); const auto key = toNextMember();) {
            areAscending = areAscending && (keys_.size() == firstKey || keys_.back() < *key);
            keys_.push_back(*key);
            onMember(*key);
        }
        // As Tidwen writes them, in ascending order, none can stand twice.
        if (!areAscending) refuseRepeated(firstKey);
        keys_.resize(firstKey);
    }
    /// Passes over the next value, whatever it is, and checks the keys in it.
    void skip();

    /// True when nothing was refused.
    bool finish() const { return !failed_; }

  private:
    struct Document;

    void open();
    bool toNextElement();
    std::optional<std::string_view> toNextMember();
    void refuseRepeated(std::size_t firstKey);

    std::unique_ptr<Document> document_;
    bool failed_ = false;
    std::vector<std::string_view> keys_; ///< of the open objects, the innermost last
};

} // namespace tidwen
