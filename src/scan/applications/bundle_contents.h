#pragma once

#include "base/stop_token.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "scan/applications/bundle.h"
#include "scan/applications/owning_bundle.h"

namespace tidwen {

/// Reads what a bundle declares and carries, bounded as `findEmbeddedBundles`; its frameworks are entered.
/// Incomplete when the bundle does not say who it is, went away meanwhile, holds more than is counted or what
/// cannot be read, its files' budget is spent, or `stop` asked to end early.
BundleContents readBundleContents(const FileSystem& files, const CodeSignatures& signatures,
                                  const Path& bundle, EmbeddedReach reach = EmbeddedReach::frameworks,
                                  const StopToken& stop = {});

} // namespace tidwen
