#include "base/text_format.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace tidwen {

namespace {

/// The placeholder at the start of `text` ("%…") and its length; nullopt when there is none.
struct Placeholder {
    FormatPart part;
    std::size_t length = 0;
};

std::optional<Placeholder> placeholderAt(std::string_view text) {
    using Kind = FormatPart::Kind;
    std::size_t at = 1;
    std::optional<std::size_t> position;
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + text.size(), number);
    const auto afterNumber = static_cast<std::size_t>(end - text.data());
    if (error == std::errc() && number > 0 && afterNumber < text.size() && text[afterNumber] == '$') {
        position = number - 1;
        at = afterNumber + 1;
    }

    const auto rest = text.substr(at);
    if (rest.starts_with("#@")) {
        const auto close = rest.find('@', 2);
        if (close == rest.npos) return std::nullopt;
        return Placeholder{{Kind::variable, std::string(rest.substr(2, close - 2)), position},
                           at + close + 1};
    }
    for (const std::string_view conversion : {"@", "lld", "ld", "d"}) {
        if (!rest.starts_with(conversion)) continue;
        const auto length = at + conversion.size();
        const auto kind = conversion == "@" ? Kind::object : Kind::number;
        return Placeholder{{kind, std::string(text.substr(0, length)), position}, length};
    }
    return std::nullopt;
}

} // namespace

std::vector<FormatPart> parseFormat(std::string_view format) {
    std::vector<FormatPart> parts;
    std::string words;
    const auto finishWords = [&] {
        if (!words.empty()) parts.push_back({FormatPart::Kind::words, std::exchange(words, {}), {}});
    };
    while (!format.empty()) {
        const auto sign = std::min(format.find('%'), format.size());
        words += format.substr(0, sign);
        format.remove_prefix(sign);
        if (format.empty()) break;
        if (auto found = placeholderAt(format)) {
            finishWords();
            parts.push_back(std::move(found->part));
            format.remove_prefix(found->length);
        } else {
            words += '%';
            format.remove_prefix(format.starts_with("%%") ? 2 : 1);
        }
    }
    finishWords();
    return parts;
}

} // namespace tidwen
