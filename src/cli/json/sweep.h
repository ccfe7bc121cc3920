#pragma once

#include "base/json.h"
#include "sweep/installer_scanner.h"
#include "sweep/orphan_scanner.h"

#include <string>

/// Documents of what sweeps find; see json_output.h for their form.
namespace tidwen::json {

/// Piece by piece: a sweep may find hundreds of thousands of traces.
void write(const OrphanScanResult& orphans, const JsonStream::Sink& sink);
/// `folder`: the one that was to be looked at.
std::string document(const InstallerScanResult& installers, const Path& folder);

} // namespace tidwen::json
