#pragma once

#include "base/path.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// What an installer package left behind as its receipt.
struct Receipt {
    std::string packageID;
    Path installBase;               ///< volume and location joined
    std::vector<std::string> files; ///< relative to `installBase`, as recorded: may be hostile or outdated
    std::optional<Path> unreadableList = {}; ///< what should list the files, and is away or cannot be read
    friend bool operator==(const Receipt&, const Receipt&) = default;
};

class Receipts {
  public:
    virtual ~Receipts() = default;
    /// Identifiers of every installed package, sorted. Empty when they cannot be had.
    virtual std::vector<std::string> packageIDs() const = 0;
    /// Nothing when there is no such receipt, or it cannot be read and no file is to blame.
    virtual std::optional<Receipt> read(const std::string& packageID) const = 0;
};

} // namespace tidwen
