#pragma once

#include "base/path.h"
#include "platform/process_runner.h"
#include "platform/receipts.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// Receipts of the running Mac, through /usr/sbin/pkgutil.
class ToolReceipts : public Receipts {
  public:
    explicit ToolReceipts(ProcessRunner& processes) : processes_(processes) {}
    std::vector<std::string> packageIDs() const override;
    std::optional<Receipt> read(const std::string& packageID) const override;

  private:
    ProcessRunner& processes_;
};

/// Volume and location from the output of "pkgutil --pkg-info-plist", joined; nullopt for other output.
std::optional<Path> parsePackageInstallBase(std::string_view propertyList);

} // namespace tidwen
