#pragma once

#include "base/message.h"
#include "platform/process_runner.h"

#include <filesystem>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Selects an item of this machine in the window of its folder: in the Finder on a Mac, elsewhere in the
/// desktop's file manager ("org.freedesktop.FileManager1", through /usr/bin/gdbus). Opens nothing. Blocks;
/// the message says why the item could not be shown.
tl::expected<void, Message> revealHere(ProcessRunner& processes, const std::filesystem::path& item);

/// The path as a "file" URL: every byte except letters, digits, "/" and "-._~" is escaped.
std::string fileAddress(const std::filesystem::path& item);

} // namespace tidwen
