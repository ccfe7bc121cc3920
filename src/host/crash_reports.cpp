#include "host/crash_reports.h"

#include "base/descriptor.h"
#include "base/text.h"
#include "base/timestamp.h"
#include "settings/user_folder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <fmt/core.h>
#include <map>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tidwen {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t maxRecordBytes = 64u << 10;
constexpr std::size_t maxEntries = 10'000; ///< limit of entries read from the folder
constexpr std::string_view prefix = "crash-";
constexpr std::string_view recordSuffix = ".record";
constexpr std::string_view reportSuffix = ".txt";

std::optional<std::int64_t> number(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (fault != std::errc{} || end != text.data() + text.size() || value < 0) return std::nullopt;
    return value;
}

/// A time from the year 2000 on; anything else counts as its beginning.
Timestamp moment(std::string_view seconds) {
    constexpr std::int64_t first = 946'684'800;
    constexpr std::int64_t last = 32'503'680'000;
    return Timestamp(std::chrono::seconds(std::clamp(number(seconds).value_or(first), first, last)));
}

/// The names in the folder with this prefix and suffix, oldest first: they contain their time in a fixed
/// width.
std::vector<std::string> names(int folder, std::string_view suffix) {
    std::vector<std::string> result;
    const int again = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (again < 0) return result;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(again), &::closedir);
    if (!entries) {
        ::close(again);
        return result;
    }
    for (std::size_t seen = 0; seen < maxEntries; ++seen) {
        const auto* entry = ::readdir(entries.get()); // NOLINT(concurrency-mt-unsafe): the stream is ours
        if (!entry) break;
        const std::string_view name = entry->d_name;
        if (name.starts_with(prefix) && name.ends_with(suffix)) result.emplace_back(name);
    }
    std::sort(result.begin(), result.end());
    return result;
}

std::optional<std::string> readRecord(int folder, const std::string& name) {
    const Descriptor file(::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat info {};
    if (!file.isOpen() || ::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)
        || info.st_uid != ::geteuid())
        return std::nullopt;
    std::string content(maxRecordBytes + 1, '\0');
    std::size_t have = 0;
    while (have < content.size()) {
        const auto got = ::read(file.get(), content.data() + have, content.size() - have);
        if (got < 0) return std::nullopt;
        if (got == 0) break;
        have += static_cast<std::size_t>(got);
    }
    if (have > maxRecordBytes) return std::nullopt;
    content.resize(have);
    return content;
}

bool writeReport(int folder, const std::string& name, std::string_view content) {
    ::unlinkat(folder, name.c_str(), 0); // an incomplete one, from an interrupted launch
    const Descriptor file(
        ::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.isOpen()) return false;
    while (!content.empty()) {
        const auto written = ::write(file.get(), content.data(), content.size());
        if (written <= 0) return false;
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

/// "crash-1763700000-42.record" becomes "crash-2025-11-21T04-40-00Z-42.txt".
std::string reportName(const std::string& recordName) {
    const std::string_view middle(recordName.data() + prefix.size(),
                                  recordName.size() - prefix.size() - recordSuffix.size());
    const auto dash = middle.find('-');
    auto time = iso8601(moment(middle.substr(0, dash)));
    std::replace(time.begin(), time.end(), ':', '-');
    const auto process = dash == middle.npos ? std::nullopt : number(middle.substr(dash + 1));
    return fmt::format("{}{}-{}{}", prefix, time, process.value_or(0), reportSuffix);
}

void dropAllButNewest(int folder, std::string_view suffix, std::size_t count) {
    const auto found = names(folder, suffix);
    for (std::size_t i = 0; i + count < found.size(); ++i)
        ::unlinkat(folder, found[i].c_str(), 0);
}

std::string signalName(std::int64_t signal) {
    constexpr std::array known = {
        std::pair{SIGSEGV, "SIGSEGV (memory that is not there)"},
        std::pair{SIGBUS, "SIGBUS (memory that cannot be read)"},
        std::pair{SIGILL, "SIGILL (not an instruction)"},
        std::pair{SIGFPE, "SIGFPE (arithmetic)"},
        std::pair{SIGTRAP, "SIGTRAP (a trap)"},
        std::pair{SIGABRT, "SIGABRT (it gave up)"},
    };
    for (const auto& [candidate, name] : known)
        if (candidate == signal) return name;
    return fmt::format("signal {}", signal);
}

std::string system() {
    struct utsname info {};
    if (::uname(&info) != 0) return "unknown";
    return fmt::format("{} {} {}", info.sysname, info.release, info.machine);
}

std::string replaced(std::string text, const std::string& what, std::string_view with) {
    if (what.size() < 2) return text; // replacing a home of "/" would hide nothing
    for (auto at = text.find(what); at != text.npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
    return text;
}

/// "/opt/bin/tidwen(+0x12)[0x55]" becomes "tidwen(+0x12)[0x55]".
std::string_view withoutFolder(std::string_view frame) {
    const auto slash = frame.substr(0, frame.find('(')).rfind('/');
    return slash == frame.npos ? frame : frame.substr(slash + 1);
}

} // namespace

std::string crashReport(std::string_view record, const std::string& introduction, const std::string& home) {
    std::map<std::string_view, std::string_view> facts;
    std::string frames;
    bool inFrames = false;
    while (!record.empty()) {
        const auto line = record.substr(0, record.find('\n'));
        record.remove_prefix(std::min(line.size() + 1, record.size()));
        if (inFrames)
            frames += "  " + printable(withoutFolder(line)) + "\n";
        else if (line == "frames")
            inFrames = true;
        else if (const auto space = line.find(' '); space != line.npos)
            facts.emplace(line.substr(0, space), line.substr(space + 1));
    }
    const auto fact = [&](std::string_view name) { return printable(facts[name]); };
    auto text = fmt::format("{}\n\nVersion: {}\nTime: {}\nSystem: {}\nCommand: {}\nCause: {}\n", introduction,
                            fact("version"), iso8601(moment(facts["time"])), system(), fact("activity"),
                            signalName(number(facts["signal"]).value_or(0)));
    if (!facts["exception"].empty()) text += fmt::format("Exception: {}\n", fact("exception"));
    text += "\nCalls, innermost first:\n" + frames;
    return replaced(std::move(text), home, "~");
}

std::optional<fs::path> CrashReports::collect() {
    const Descriptor folder(::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.isOpen()) return std::nullopt; // no crash yet, or a link in its place
    struct stat info {};
    if (::fstat(folder.get(), &info) != 0 || info.st_uid != ::geteuid()) return std::nullopt; // as with sudo
    if (::flock(folder.get(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
    auto records = names(folder.get(), recordSuffix);
    if (records.empty()) return std::nullopt;
    dropAllButNewest(folder.get(), recordSuffix, kept);
    if (records.size() > kept) records.erase(records.begin(), records.end() - kept);

    std::optional<fs::path> newest;
    for (const auto& record : records) {
        if (const auto content = readRecord(folder.get(), record)) {
            const auto name = reportName(record);
            if (!writeReport(folder.get(), name, crashReport(*content, introduction_, userHome().string()))) {
                log_.error("Crash report could not be written: {}", (folder_ / name).string());
                continue; // the record stays for the next launch
            }
            newest = folder_ / name;
        }
        ::unlinkat(folder.get(), record.c_str(), 0);
    }
    dropAllButNewest(folder.get(), reportSuffix, kept);
    return newest;
}

fs::path CrashReports::defaultFolder() {
#ifdef __APPLE__
    if (!namedFolder("XDG_STATE_HOME")) return userHome() / "Library/Logs/Tidwen";
#endif
    return userFolder("XDG_STATE_HOME", ".local/state") / "tidwen";
}

} // namespace tidwen
