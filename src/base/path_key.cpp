#include "base/path_key.h"

#include "base/text.h"

namespace tidwen {

Path pathKey(const Path& path) {
    std::string key;
    for (const auto& component : path.components()) {
        const auto name = fileNameKey(component);
        key += (name.empty() ? component : name) + "/"; // a name of marks alone is a name too
    }
    return Path(std::move(key));
}

} // namespace tidwen
