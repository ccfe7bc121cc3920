#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// One part of a format string of Localizable.strings: literal text or a placeholder.
struct FormatPart {
    enum class Kind {
        words,
        object,   ///< "%@"
        number,   ///< "%lld", "%ld", "%d"
        variable, ///< "%#@name@": text chosen by a plural rule
    };
    Kind kind = Kind::words;
    std::string text; ///< the literal text, the variable's name, or the placeholder as written
    std::optional<std::size_t>
        position; ///< index from 0, given by "%2$@"; without one the next argument is used

    friend bool operator==(const FormatPart&, const FormatPart&) = default;
};

/// Parses a format. "%%" is a literal "%"; a percent sign that begins no known placeholder is literal, too.
std::vector<FormatPart> parseFormat(std::string_view format);

} // namespace tidwen
