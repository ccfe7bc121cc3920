#pragma once

#include "base/path.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// What a code signature says of the application's developer. Not verified against the content.
struct CodeSignature {
    std::optional<std::string> teamID;          ///< never empty
    std::vector<std::string> applicationGroups; ///< from the entitlements, empty entries dropped, order kept
    bool isUnreadable = false; ///< the code or its signature exists, but could not be read completely
    friend bool operator==(const CodeSignature&, const CodeSignature&) = default;
};

class CodeSignatures {
  public:
    virtual ~CodeSignatures() = default;
    /// `executable` is the bundle's main executable. Returns an empty signature for unsigned or unreadable
    /// code.
    virtual CodeSignature read(const Path& bundle, const Path& executable) const = 0;
};

} // namespace tidwen
