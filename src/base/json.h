#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {

/// Writes JSON as every document of Tidwen has it: two-space indentation, sorted keys, " : " between key and
/// value, forward slashes and everything that is not printable (`isPrintable`) escaped, a final line feed.
/// Invalid UTF-8 in strings becomes replacement characters, so the document is always valid.
std::string writeJson(const nlohmann::json& value);

/// Writes a document in the form of `writeJson` piece by piece, so that a long list need not be held in
/// memory. The caller writes the keys of an object in sorted order.
class JsonStream {
  public:
    using Sink = std::function<void(std::string_view)>;

    explicit JsonStream(Sink sink) : sink_(std::move(sink)) {}

    void beginObject() { begin('{', '}'); }
    void beginArray() { begin('[', ']'); }
    /// Closes the innermost open array or object. A final line feed follows the outermost one.
    void end();
    void key(std::string_view name); ///< the value of the key follows
    void value(const nlohmann::json& value);
    /// The next elements of the open array. Made and encoded on all cores, some hundreds at a time.
    void values(std::size_t count, const std::function<nlohmann::json(std::size_t)>& make);

  private:
    static constexpr std::size_t pieceBytes = 64u << 10;
    struct Open {
        char bracket;
        bool isEmpty = true;
    };

    void begin(char open, char close);
    void beginLine();
    void flush(std::size_t mostKept);

    Sink sink_;
    std::string text_; ///< not yet passed to the sink
    std::vector<Open> open_;
    bool isAfterKey_ = false;
};

/// Parses a document of at most `maxBytes` and 64 levels. Returns nullopt when it is malformed, deeper or
/// larger. Duplicate keys in an object make it malformed, because two readers could take different values.
std::optional<nlohmann::json> parseJson(std::string_view text, std::size_t maxBytes = 64u << 20);

} // namespace tidwen
