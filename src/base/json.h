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

/// The one form of every JSON document Tidwen writes: two-space indentation, sorted keys, " : " between key
/// and value, forward slashes and everything that is not printable (`isPrintable`) escaped, a final line
/// feed. Strings that are not valid UTF-8 are written with replacement characters, so the document is always
/// valid.
std::string writeJson(const nlohmann::json& value);

/// Writes a document in the form of `writeJson` piece by piece, so that a long list need not be held in
/// memory. The caller puts the keys of an object in the order of the alphabet.
class JsonStream {
  public:
    using Sink = std::function<void(std::string_view)>;

    explicit JsonStream(Sink sink) : sink_(std::move(sink)) {}

    void beginObject() { begin('{', '}'); }
    void beginArray() { begin('[', ']'); }
    /// Closes what was begun last. The final line feed follows the outermost bracket.
    void end();
    void key(std::string_view name); ///< its value comes next
    void value(const nlohmann::json& value);

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
    std::string text_; ///< not given to the sink yet
    std::vector<Open> open_;
    bool isAfterKey_ = false;
};

/// Reads a document of at most `maxBytes` and 64 levels. Nothing when it is malformed, deeper or larger.
/// A document that names one key twice in an object is malformed: two readers could see two files.
std::optional<nlohmann::json> parseJson(std::string_view text, std::size_t maxBytes = 64u << 20);

} // namespace tidwen
