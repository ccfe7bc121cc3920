#include "base/numbered_name.h"

#include <algorithm>
#include <fmt/core.h>

namespace tidwen {

std::string shortened(std::string text, std::size_t bytes) {
    if (text.size() <= bytes) return text;
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80)
        --bytes;
    text.resize(bytes);
    return text;
}

Path numberedName(const Path& path, int number) {
    if (number < 2) return path;
    auto stem = path.stem();
    auto tail = fmt::format(" {}.{}", number, path.extension());
    if (path.extension().empty() || tail.size() >= longestFileName) {
        stem = path.lastComponent();
        tail = fmt::format(" {}", number);
    }
    return path.parent() / (shortened(std::move(stem), longestFileName - tail.size()) + tail);
}

} // namespace tidwen
