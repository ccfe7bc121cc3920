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

/// Reads a JSON document in one forward pass, so that long lists go straight into records. The caller checks
/// `next` and takes each value once, with the function for its kind, or skips it.
///
/// Rejects malformed documents, invalid UTF-8, more than 64 levels, numbers that fit neither 64 bits nor a
/// double, and duplicate keys in an object. After a rejection there is no next value and earlier values are
/// void: check `finish` before using them.
class JsonReader {
  public:
    static constexpr std::size_t maxDepth = 64;

    enum class Kind { null, boolean, number, string, array, object, none };
    /// The first type that fits: unsigned, signed, floating point.
    using Number = std::variant<std::uint64_t, std::int64_t, double>;

    /// Parses the text, which need not outlive the call. Skips a leading byte-order mark and stops at a zero
    /// byte.
    explicit JsonReader(std::string_view text);
    ~JsonReader();
    JsonReader(const JsonReader&) = delete;
    JsonReader& operator=(const JsonReader&) = delete;

    /// The kind of the next value; `none` at the end and after a rejection.
    Kind next() const;

    // Each takes the next value, which must be of that kind.

    bool boolean();
    Number number();
    std::string_view string(); ///< valid for the lifetime of the reader
    /// Calls `onElement()` before each element, which it may take or leave.
    template<class OnElement>
    void array(OnElement onElement) {
        for (open(); toNextElement();)
            onElement();
    }
    /// Calls `onMember(key)` before the value of each member, which it may take or leave.
    template<class OnMember>
    void object(OnMember onMember) {
        const auto firstKey = keys_.size();
        bool areAscending = true;
        for (open(); const auto key = toNextMember();) {
            areAscending = areAscending && (keys_.size() == firstKey || keys_.back() < *key);
            keys_.push_back(*key);
            onMember(*key);
        }
        // keys in ascending order, as Tidwen writes them, cannot repeat
        if (!areAscending) refuseRepeated(firstKey);
        keys_.resize(firstKey);
    }
    /// Skips the next value of any kind and checks the keys in it.
    void skip();

    /// True when nothing was rejected.
    bool finish() const { return !failed_; }

  private:
    struct Document;

    void open();
    bool toNextElement();
    std::optional<std::string_view> toNextMember();
    void refuseRepeated(std::size_t firstKey);

    std::unique_ptr<Document> document_;
    bool failed_ = false;
    std::vector<std::string_view> keys_; ///< of the open objects, innermost last
};

} // namespace tidwen
