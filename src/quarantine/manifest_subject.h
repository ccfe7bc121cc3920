#pragma once

#include "base/texts.h"
#include "quarantine/manifest.h"

#include <cstddef>
#include <string>

namespace tidwen {

/// With more applications than this a run is called by their number: of leftovers there may be thousands.
inline constexpr std::size_t mostNamedApps = 4;

/// What a run removed, in a few words: the names of its applications as they are on disk, control characters
/// included, or how many they or the leftovers are.
std::string subjectText(const Manifest& manifest, const Texts& texts);

} // namespace tidwen
