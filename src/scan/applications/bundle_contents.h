#pragma once

#include "base/stop_token.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "scan/applications/bundle.h"
#include "scan/applications/owning_bundle.h"

#include <array>
#include <string_view>

namespace tidwen {

/// Reads what a bundle declares and carries, bounded as `findEmbeddedBundles`; its frameworks are entered.
/// Incomplete when the bundle does not say who it is, went away meanwhile, holds more than is counted or what
/// cannot be read, its files' budget is spent, or `stop` asked to end early.
BundleContents readBundleContents(const FileSystem& files, const CodeSignatures& signatures,
                                  const Path& bundle, EmbeddedReach reach = EmbeddedReach::frameworks,
                                  const StopToken& stop = {});

/// The same of a bundle that is open already. Of its Info.plist it takes the identifier, the executable and
/// the privileged tools (`keysOfContents`).
BundleContents readBundleContents(const FileSystem& files, const CodeSignatures& signatures,
                                  const Bundle& opened, EmbeddedReach reach, const StopToken& stop);

inline constexpr std::array<std::string_view, 3> keysOfContents = {"CFBundleIdentifier", "CFBundleExecutable",
                                                                   "SMPrivilegedExecutables"};

} // namespace tidwen
