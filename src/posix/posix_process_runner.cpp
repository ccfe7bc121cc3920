#include "posix/posix_process_runner.h"

#include "base/text.h"
#include "posix/child_process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <system_error>
#include <tl/expected.hpp>
#include <unistd.h>
#include <vector>

namespace tidwen {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

/// Neither end is inherited by any tool, and neither is one of the standard streams, which the file actions
/// of the spawn overwrite.
std::optional<Pipe> openPipe() {
    std::array<int, 2> ends{};
#ifdef POSIX_SPAWN_CLOEXEC_DEFAULT
    if (pipe(ends.data()) != 0)
        return std::nullopt; // this system closes descriptors at the spawn, and lacks pipe2
#else
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
#endif
    const FileDescriptor first(ends[0]);
    const FileDescriptor second(ends[1]);
    Pipe result{FileDescriptor(fcntl(first.get(), F_DUPFD_CLOEXEC, 3)),
                FileDescriptor(fcntl(second.get(), F_DUPFD_CLOEXEC, 3))};
    if (!result.readEnd.isOpen() || !result.writeEnd.isOpen()) return std::nullopt;
    if (fcntl(result.readEnd.get(), F_SETFL, O_NONBLOCK) != 0) return std::nullopt;
    return result;
}

/// One output stream of a tool, read without blocking.
class OutputReader {
  public:
    OutputReader(FileDescriptor readEnd, std::size_t limit) : readEnd_(std::move(readEnd)), limit_(limit) {}

    bool isOpen() const { return readEnd_.isOpen(); }
    int descriptor() const { return readEnd_.get(); }

    /// Reads what is available, at most a few buffers, so that the caller can check the time between two
    /// calls.
    void take() {
        std::array<char, 65536> buffer;
        for (int round = 0; round < 16 && isOpen(); ++round) {
            const auto count = read(readEnd_.get(), buffer.data(), buffer.size());
            if (count > 0)
                keep({buffer.data(), static_cast<std::size_t>(count)});
            else if (count < 0 && (errno == EAGAIN || errno == EINTR))
                return;
            else
                readEnd_.close();
        }
    }

    std::string text() && {
        if (isTruncated_) dropCutCharacter();
        return isValidUtf8(bytes_) ? std::move(bytes_) : std::string();
    }

  private:
    void keep(std::string_view bytes) {
        const auto room = limit_ - bytes_.size();
        isTruncated_ = isTruncated_ || bytes.size() > room;
        bytes_.append(bytes.substr(0, room));
    }

    /// The limit may have split a character, which is no reason to discard the whole text.
    void dropCutCharacter() {
        std::size_t continuation = 0;
        while (continuation < std::min<std::size_t>(bytes_.size(), 3)
               && (static_cast<unsigned char>(bytes_[bytes_.size() - 1 - continuation]) & 0xC0) == 0x80)
            ++continuation;
        const auto lead = bytes_.size() - 1 - continuation;
        if (lead < bytes_.size() && !isValidUtf8(std::string_view(bytes_).substr(lead))) bytes_.resize(lead);
    }

    FileDescriptor readEnd_;
    std::size_t limit_;
    std::string bytes_;
    bool isTruncated_ = false;
};

/// A running tool with its two streams.
class RunningTool {
  public:
    RunningTool(ChildProcess process, OutputReader output, OutputReader error)
        : process_(std::move(process)), output_(std::move(output)), error_(std::move(error)) {}

    ChildProcess& process() { return process_; }

    /// Reads until the tool has ended (with `alsoOutput`, also both streams). False at the deadline.
    bool readUntilEnd(steady_clock::time_point deadline, bool alsoOutput) {
        auto pause = shortestPause;
        for (;;) {
            if (process_.hasEnded() && (!alsoOutput || (!output_.isOpen() && !error_.isOpen()))) return true;
            const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
            if (left <= milliseconds::zero()) return false;
            // Output wakes the poll at once; the end of a tool that has closed its streams is polled for.
            pause = readOnce(std::min(pause, left)) ? shortestPause : std::min(pause * 2, longestPause);
        }
    }

    ProcessResult result() && {
        output_.take();
        error_.take();
        return {process_.wait(), std::move(output_).text(), std::move(error_).text()};
    }

  private:
    static constexpr milliseconds shortestPause{1};
    static constexpr milliseconds longestPause{50};

    /// True when a stream returned something, including its end.
    bool readOnce(milliseconds pause) {
        std::array<pollfd, 2> streams{
            pollfd{output_.descriptor(), POLLIN, 0},
            pollfd{error_.descriptor(), POLLIN, 0}}; // poll ignores a negative number
        if (poll(streams.data(), streams.size(), static_cast<int>(pause.count())) <= 0) return false;
        if (streams[0].revents != 0) output_.take();
        if (streams[1].revents != 0) error_.take();
        return true;
    }

    ChildProcess process_;
    OutputReader output_;
    OutputReader error_;
};

ProcessRunnerError launchFailed(int error) {
    return {ProcessRunnerError::Kind::launchFailed, std::generic_category().message(error)};
}

} // namespace

tl::expected<ProcessResult, ProcessRunnerError>
PosixProcessRunner::run(const std::string& executable, const std::vector<std::string>& arguments,
                        milliseconds timeout) {
    auto output = openPipe();
    auto error = openPipe();
    if (!output || !error) return tl::unexpected(launchFailed(errno));

    auto process = ChildProcess::start(executable, arguments, output->writeEnd, error->writeEnd);
    if (!process) return tl::unexpected(launchFailed(process.error()));
    output->writeEnd.close();
    error->writeEnd.close();
    RunningTool tool(std::move(*process), OutputReader(std::move(output->readEnd), limits_.outputBytes),
                     OutputReader(std::move(error->readEnd), limits_.outputBytes));

    if (!tool.readUntilEnd(steady_clock::now() + timeout, false)) {
        tool.process().signalGroup(SIGTERM);
        tool.readUntilEnd(steady_clock::now() + limits_.terminationGrace, true);
        return tl::unexpected(
            ProcessRunnerError{ProcessRunnerError::Kind::timedOut, {}}); // kills what is left
    }
    tool.readUntilEnd(steady_clock::now() + limits_.lingeringOutput, true);
    return std::move(tool).result();
}

Message describe(const ProcessRunnerError& error) {
    if (error.kind == ProcessRunnerError::Kind::timedOut) return {"failure.timedOut"};
    return {"failure.launchFailed %@", {error.text}};
}

} // namespace tidwen
