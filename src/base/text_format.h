#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// One part of a format as Localizable.strings writes them: words to take as they are, or a placeholder.
struct FormatPart {
    enum class Kind {
        words,
        object,   ///< "%@"
        number,   ///< "%lld", "%ld", "%d"
        variable, ///< "%#@name@": words that a plural rule chooses
    };
    Kind kind = Kind::words;
    std::string text;                    ///< the words, the variable's name, or the placeholder as written
    std::optional<std::size_t> position; ///< from 0; given by "%2$@", otherwise the next argument is meant

    friend bool operator==(const FormatPart&, const FormatPart&) = default;
};

/// Takes a format apart. "%%" is the words "%"; a per cent sign that begins nothing known stays as it is.
std::vector<FormatPart> parseFormat(std::string_view format);

} // namespace tidwen
