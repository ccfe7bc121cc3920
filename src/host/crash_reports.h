#pragma once

#include "base/log.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// Reports of crashes of this program, as readable text in a folder of the user who ran it. Written on this
/// machine, shown to that user, and never sent.
class CrashReports {
  public:
    static constexpr std::size_t kept = 10;

    /// `introduction`: the text at the head of a report that explains it to the user.
    CrashReports(std::filesystem::path folder, std::string introduction, Log& log)
        : folder_(std::move(folder)), introduction_(std::move(introduction)), log_(log) {}

    /// Converts the records of crashed runs (`crashRecorder`) to reports, each once, readable only by their
    /// owner, and deletes all but the last ten. Returns the newest of the new ones. A record that is not a
    /// plain file of the user, or is larger than 64 KiB, is dropped unread. If two processes call it at once,
    /// one does the work.
    std::optional<std::filesystem::path> collect();

    /// "$XDG_STATE_HOME/tidwen"; else "~/Library/Logs/Tidwen" on a Mac, "~/.local/state/tidwen" elsewhere.
    static std::filesystem::path defaultFolder();

  private:
    std::filesystem::path folder_;
    std::string introduction_;
    Log& log_;
};

/// A report from a record. Strips folders from names of program files and replaces `home` by "~".
std::string crashReport(std::string_view record, const std::string& introduction, const std::string& home);

} // namespace tidwen
