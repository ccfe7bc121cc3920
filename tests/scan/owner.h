#pragma once

#include "base/path.h"
#include "scan/applications/owning_bundle.h"

#include <string>
#include <string_view>

namespace tidwen::test {

/// A bundle that owns data, found at its own location.
inline OwningBundle owner(std::string_view path, std::string_view bundleID, std::string_view name) {
    const Path url{std::string(path)};
    return {.url = url,
            .place = url,
            .bundleID = std::string(bundleID),
            .name = std::string(name),
            .names = {std::string(name)},
            .isApplication = url.lowercasedExtension() == "app",
            .isReadable = true};
}

} // namespace tidwen::test
