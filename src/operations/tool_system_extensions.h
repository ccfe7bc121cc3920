#pragma once

#include "platform/process_runner.h"
#include "platform/system_extensions.h"

#include <string_view>
#include <vector>

namespace tidwen {

/// System extensions of the running Mac, through /usr/bin/systemextensionsctl (timeout 20 seconds).
class ToolSystemExtensions : public SystemExtensions {
  public:
    explicit ToolSystemExtensions(ProcessRunner& processes) : processes_(processes) {}
    std::vector<SystemExtensionRecord> list() const override;

  private:
    ProcessRunner& processes_;
};

/// The rows of "systemextensionsctl list", one record per bundle identifier.
std::vector<SystemExtensionRecord> parseSystemExtensionList(std::string_view output);

} // namespace tidwen
