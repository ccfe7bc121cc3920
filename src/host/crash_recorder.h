#pragma once

#include <filesystem>
#include <string_view>

/// Writes down how the program crashed, while it crashes, for `CrashReports` to find at the next start.
///
/// Only what a signal handler may do is done then: the record is opened, written and closed with system calls
/// from memory set aside before; nothing is allocated and no lock is taken. The process ends as it would have
/// without, so that a core file and the shell's status stay true. Nothing on the disk is touched until
/// a crash.
///
/// State of the process, because a signal handler gets nothing else. A stack overflow is recorded on the
/// thread that called `install` only: the handler's own stack belongs to one thread.
namespace tidwen::crashRecorder {

/// `folder` is made when it is needed, for its owner alone. Call it once, on the main thread, before others
/// are started.
void install(const std::filesystem::path& folder, std::string_view version);

/// What the program was asked to do, to stand in the record: the name of a command, nothing of the user's.
void note(std::string_view activity);

} // namespace tidwen::crashRecorder
