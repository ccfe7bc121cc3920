#pragma once

#include <string>
#include <vector>

namespace tidwen {

/// A driver or network extension that an application installed in the system. Only the system can remove it.
struct SystemExtensionRecord {
    std::string teamID;
    std::string bundleID;
    std::string name;
    friend bool operator==(const SystemExtensionRecord&, const SystemExtensionRecord&) = default;
};

class SystemExtensions {
  public:
    virtual ~SystemExtensions() = default;
    /// One record per bundle identifier. Empty when they cannot be read.
    virtual std::vector<SystemExtensionRecord> list() const = 0;
};

} // namespace tidwen
