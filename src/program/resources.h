#pragma once

#include "system/request_inbox.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tidwen {

/// The folder with the texts: $TIDWEN_RESOURCES, else beside the program ("../resources" of a build,
/// "../share/tidwen" of an installation, "../Resources" of an application bundle). Empty when there is none.
/// `program` is the first word of the command line.
std::filesystem::path findResources(const char* program);

/// The bundle that the program runs from ("Tidwen.app/Contents/MacOS/tidwen"); outside of one, or when its
/// Info.plist cannot be read, what stands for it.
OwnBundle findOwnBundle(const char* program);

/// The language that the environment asks for ("de", "pt-BR"), if `resources` has it, else "en".
std::string preferredLanguage(const std::filesystem::path& resources);

/// The languages that `resources` has words for, sorted.
std::vector<std::string> availableLanguages(const std::filesystem::path& resources);

/// The program's own file, from how it was called where the system does not tell; empty when it cannot be
/// found.
std::filesystem::path programFile(const char* program);

} // namespace tidwen
