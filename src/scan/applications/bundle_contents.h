#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "scan/applications/bundle.h"
#include "scan/applications/owning_bundle.h"

#include <array>
#include <string_view>

namespace tidwen {

/// Reads what a bundle declares and contains, with the limits of `findEmbeddedBundles` and including its
/// frameworks. Incomplete when the bundle has no identity, disappears meanwhile, exceeds a limit or contains
/// something unreadable, when the budget is exhausted, or when `stop` asks to end early.
BundleContents readBundleContents(const FileSystem& files, const CodeSignatures& signatures,
                                  const Path& bundle, EmbeddedReach reach = EmbeddedReach::frameworks,
                                  const StopToken& stop = {});

/// The same for a bundle that is already open. Uses identifier, executable and privileged tools of its
/// Info.plist (`keysOfContents`).
BundleContents readBundleContents(const FileSystem& files, const CodeSignatures& signatures,
                                  const Bundle& opened, EmbeddedReach reach, const StopToken& stop);

inline constexpr std::array<std::string_view, 3> keysOfContents = {"CFBundleIdentifier", "CFBundleExecutable",
                                                                   "SMPrivilegedExecutables"};

} // namespace tidwen
