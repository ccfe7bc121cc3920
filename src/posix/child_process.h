#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Owns an open file descriptor and closes it on destruction.
class FileDescriptor {
  public:
    explicit FileDescriptor(int number = -1) : number_(number) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : number_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;

    int get() const { return number_; }
    bool isOpen() const { return number_ >= 0; }
    void close();

  private:
    int release();
    int number_;
};

/// A running tool in its own process group. The destructor kills the group and waits for the tool, so that no
/// zombie remains on any path.
class ChildProcess {
  public:
    /// Starts `executable` with the null device as input and the two pipe ends as output and error. The error
    /// is an errno.
    static tl::expected<ChildProcess, int> start(const std::string& executable,
                                                 const std::vector<std::string>& arguments,
                                                 const FileDescriptor& standardOutput,
                                                 const FileDescriptor& standardError);
    ~ChildProcess();
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&&) = delete;

    /// Whether the tool itself has ended; its children may still run.
    bool hasEnded() const;
    /// Signals the tool and its children, until the tool has been waited for.
    void signalGroup(int signal) const;
    /// Waits for the end. Returns the exit status, or 128 + the number of the signal that ended it;
    /// `unknownStatus` when the system has discarded the status, as it does for a program started with
    /// SIGCHLD ignored.
    int wait();
    static constexpr int unknownStatus = -1;

  private:
    explicit ChildProcess(pid_t id) : id_(id) {}
    pid_t id_; ///< 0 after the wait
};

} // namespace tidwen
