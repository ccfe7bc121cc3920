#pragma once

#include "base/path.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// The receipt of an installer package.
struct Receipt {
    std::string packageID;
    Path installBase; ///< volume and location joined
    std::vector<std::string>
        files; ///< relative to `installBase`, as recorded; untrusted and possibly outdated
    std::optional<Path> unreadableList = {}; ///< the file list that is missing or unreadable
    friend bool operator==(const Receipt&, const Receipt&) = default;
};

class Receipts {
  public:
    virtual ~Receipts() = default;
    /// Identifiers of all installed packages, sorted. Empty when they cannot be read.
    virtual std::vector<std::string> packageIDs() const = 0;
    /// nullopt when there is no such receipt, or it cannot be read for no fault of a file.
    virtual std::optional<Receipt> read(const std::string& packageID) const = 0;
};

} // namespace tidwen
