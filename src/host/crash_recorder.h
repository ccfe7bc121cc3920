#pragma once

#include <filesystem>
#include <string_view>

/// Records a crash of the program while it happens, for `CrashReports` to read at the next launch.
///
/// The signal handler only makes async-signal-safe calls: it opens, writes and closes the record from memory
/// reserved before; it allocates nothing and takes no lock. The process then ends as it would have without
/// the handler, so core file and exit status are unaffected. Nothing on disk is touched before a crash.
///
/// Process-wide state, because a signal handler has no context. A stack overflow is recorded only on the
/// thread that called `install`: the handler's alternate stack belongs to one thread.
namespace tidwen::crashRecorder {

/// `folder` is created on demand, accessible only to its owner. Call it once, on the main thread, before
/// other threads start.
void install(const std::filesystem::path& folder, std::string_view version);

/// Sets the activity to record: the name of the running command, no user data.
void note(std::string_view activity);

} // namespace tidwen::crashRecorder
