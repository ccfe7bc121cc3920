#pragma once

#include "sweep/installer_scanner.h"
#include "sweep/orphan_scanner.h"

#include <string>

/// Documents of what sweeps find; see json_output.h for their form.
namespace tidwen::json {

std::string document(const OrphanScanResult& orphans);
std::string document(const InstallerScanResult& installers);

} // namespace tidwen::json
