#pragma once

#include "base/texts.h"
#include "operations/removal_operation.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace tidwen {

/// The name of what is removed.
struct RemovalSubject {
    enum class Kind { applications, leftovers, installers, startupItems };

    Kind kind = Kind::applications;
    RemovalMode mode = RemovalMode::uninstall;
    std::size_t groups = 0; ///< applications, or groups of leftovers
    std::size_t items = 0;
    std::string name = {}; ///< of the first group
    bool goesWhole = true; ///< every application itself is removed

    /// "Marlin Notes", "3 applications", "12 leftovers"; "2 items of Kip" when an application itself stays,
    /// except in a reset.
    std::string text(const Texts& texts) const;

    /// The kind of removal in JSON: "uninstall", "reset", "items" (of applications that stay), "orphans",
    /// "installers", "startupItems".
    std::string_view kindName() const;

    friend bool operator==(const RemovalSubject&, const RemovalSubject&) = default;
};

} // namespace tidwen
