#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// An open file that is closed when it goes out of scope.
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

/// A running tool in a process group of its own. Destroying it kills the group and waits for the tool, so
/// that no path through the code leaves a zombie.
class ChildProcess {
  public:
    /// Starts `executable` with the null device as input and the two pipe ends as output. The error is an
    /// errno.
    static tl::expected<ChildProcess, int> start(const std::string& executable,
                                                 const std::vector<std::string>& arguments,
                                                 const FileDescriptor& standardOutput,
                                                 const FileDescriptor& standardError);
    ~ChildProcess();
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&&) = delete;

    /// Has the tool itself ended? Its children may go on.
    bool hasEnded() const;
    /// Sends a signal to the tool and its children, as long as the tool has not been waited for.
    void signalGroup(int signal) const;
    /// Waits for the end: the exit status, or 128 + the number of the signal that ended it. `unknownStatus`
    /// when the system has thrown the status away, as it does for a program that was started with SIGCHLD
    /// ignored.
    int wait();
    static constexpr int unknownStatus = -1;

  private:
    explicit ChildProcess(pid_t id) : id_(id) {}
    pid_t id_; ///< 0 once it was waited for
};

} // namespace tidwen
