#pragma once

#include "base/json.h"
#include "base/path.h"
#include "sweep/installer_scanner.h"
#include "sweep/orphan_scanner.h"

#include <string>

/// Documents of sweep results; for their format see json/output.h.
namespace tidwen::json {

/// Written in parts: a sweep may find hundreds of thousands of traces. `selectsDefaults`:
/// false while the protected applications are unknown, so that no trace is selected.
void write(const OrphanScanResult& orphans, bool selectsDefaults, const Texts& texts,
           const JsonStream::Sink& sink);
/// `folder`: the searched folder.
std::string document(const InstallerScanResult& installers, const Path& folder);

} // namespace tidwen::json
