#pragma once

#include "base/log.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// Reports of crashes of this program, readable text in a folder of the user who ran it. They are written on
/// this machine, shown to him, and sent nowhere.
class CrashReports {
  public:
    static constexpr std::size_t kept = 10;

    /// `introduction`: the words at the head of a report that tell the user what it is.
    CrashReports(std::filesystem::path folder, std::string introduction, Log& log)
        : folder_(std::move(folder)), introduction_(std::move(introduction)), log_(log) {}

    /// Turns the records that crashed runs left (`crashRecorder`) into reports, each once, readable by their
    /// owner alone, and deletes all but the last ten. Gives the newest of the new ones. A record that is no
    /// plain file of the user, or larger than 64 KiB, is dropped unread. Two processes at once: one does it.
    std::optional<std::filesystem::path> collect();

    /// "$XDG_STATE_HOME/tidwen"; else "~/Library/Logs/Tidwen" on a Mac, "~/.local/state/tidwen" elsewhere.
    static std::filesystem::path defaultFolder();

  private:
    std::filesystem::path folder_;
    std::string introduction_;
    Log& log_;
};

/// A report from a record. Folders are cut off the names of program files, and `home` becomes "~".
std::string crashReport(std::string_view record, const std::string& introduction, const std::string& home);

} // namespace tidwen
