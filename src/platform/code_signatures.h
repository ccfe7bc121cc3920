#pragma once

#include "base/path.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// What a code signature says of who made an application. Nothing is verified against the content.
struct CodeSignature {
    std::optional<std::string> teamID;          ///< never empty
    std::vector<std::string> applicationGroups; ///< from the entitlements, empty entries dropped, order kept
    bool isUnreadable = false; ///< the code or its signature is there, and not all could be read
    friend bool operator==(const CodeSignature&, const CodeSignature&) = default;
};

class CodeSignatures {
  public:
    virtual ~CodeSignatures() = default;
    /// `executable` is the bundle's main executable. Unsigned or unreadable code gives an empty signature.
    virtual CodeSignature read(const Path& bundle, const Path& executable) const = 0;
};

} // namespace tidwen
