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

/// The bundle that the program runs from ("Tidwen.app/Contents/MacOS/tidwen"); a default outside of one, or
/// when its Info.plist is unreadable.
OwnBundle findOwnBundle(const char* program);

/// The language requested by the environment ("de", "pt-BR") if `resources` has it, else "en".
std::string preferredLanguage(const std::filesystem::path& resources);

/// The languages in `resources`, sorted.
std::vector<std::string> availableLanguages(const std::filesystem::path& resources);

/// The program's own file, derived from argv[0] where the system does not provide it; empty if not found.
std::filesystem::path programFile(const char* program);

} // namespace tidwen
