#include "base/path_key.h"

#include "base/text.h"

#include <algorithm>
#include <string>

namespace tidwen {

Path pathKey(const Path& path) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (std::ranges::all_of(path.string(), isAscii)) return Path(lowercased(path.string()));
    std::string key;
    for (const auto& component : path.components()) {
        const auto name = fileNameKey(component);
        key +=
            (name.empty() ? component : name) + "/"; // a name of only ignorable characters keeps its own text
    }
    return Path(std::move(key));
}

} // namespace tidwen
