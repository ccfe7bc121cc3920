#pragma once

#include "base/message.h"
#include "platform/process_runner.h"

#include <filesystem>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Shows an item of this machine, chosen, in the window of its folder: the Finder's on a Mac, elsewhere that
/// of the file manager that the desktop names ("org.freedesktop.FileManager1", through /usr/bin/gdbus). Opens
/// nothing. Blocks; the message says why nothing was shown.
tl::expected<void, Message> revealHere(ProcessRunner& processes, const std::filesystem::path& item);

/// The path as a "file" address: every byte that is neither letter, digit, "/" nor one of "-._~" escaped.
std::string fileAddress(const std::filesystem::path& item);

} // namespace tidwen
