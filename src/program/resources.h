#pragma once

#include "system/request_inbox.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tidwen {

/// The folder with the texts: $TIDWEN_RESOURCES, else beside the program ("../resources" of a build,
/// "../share/tidwen" of an installation, "../Resources" of an application bundle). Empty if not found.
/// `program` is argv[0].
std::filesystem::path findResources(const char* program);

/// What a program says, in English, when it found no texts: without them no message is readable, so that
/// nothing may be begun.
inline constexpr const char* textsNotFound =
    "The texts were not found, so nothing was done. TIDWEN_RESOURCES may name their folder.";

/// The bundle that the program runs from ("Tidwen.app/Contents/MacOS/tidwen"); a default outside of one, or
/// when its Info.plist is unreadable.
OwnBundle findOwnBundle(const char* program);

/// The translation to speak: `setting` where it is one of `availableLanguages`; otherwise ("system", or a
/// language of another version) the one that serves best whoever set up this account, or "en".
std::string spokenLanguage(const std::filesystem::path& resources, const std::string& setting);

/// The languages in `resources`, sorted.
std::vector<std::string> availableLanguages(const std::filesystem::path& resources);

/// The program's own file, derived from argv[0] where the system does not provide it; empty if not found.
std::filesystem::path programFile(const char* program);

} // namespace tidwen
