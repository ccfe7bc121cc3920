#pragma once

#include "platform/keychain.h"
#include "platform/system_extensions.h"
#include "scan/matching/scan_context.h"
#include "scan/matching/trace_collector.h"

namespace tidwen {

/// Password items whose service is the target's identifier or name.
void probeKeychain(const ScanContext& context, const Keychain& keychain, TraceCollector& traces);

/// The target's system extensions, which only the user can remove.
void probeSystemExtensions(const ScanContext& context, const SystemExtensions& extensions,
                           TraceCollector& traces);

} // namespace tidwen
