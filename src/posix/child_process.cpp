#include "posix/child_process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace tidwen {

namespace {

/// The environment of a tool. TMPDIR is the user's own folder; __CF_USER_TEXT_ENCODING saves macOS tools a
/// look into the home folder; the session bus is needed to show something on a Linux desktop.
std::vector<std::string> toolEnvironment() {
    std::vector<std::string> variables = {"PATH=/usr/bin:/bin:/usr/sbin:/sbin"};
    for (const char* kept :
         {"HOME", "USER", "LOGNAME", "TMPDIR", "__CF_USER_TEXT_ENCODING", "DBUS_SESSION_BUS_ADDRESS"})
        if (const char* value = std::getenv(kept)) // NOLINT(concurrency-mt-unsafe): nobody sets it
            variables.push_back(std::string(kept) + "=" + value);
    return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (auto& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

/// Both structures of a spawn, destroyed together. Keeps the first error of all calls.
class SpawnSettings {
  public:
    SpawnSettings() {
        keep(posix_spawn_file_actions_init(&actions));
        keep(posix_spawnattr_init(&attributes));
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    void streams(int standardOutput, int standardError) {
        keep(posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
        keep(posix_spawn_file_actions_adddup2(&actions, standardOutput, STDOUT_FILENO));
        keep(posix_spawn_file_actions_adddup2(&actions, standardError, STDERR_FILENO));
    }

    /// A separate process group, and default signal handling whatever this program blocks or ignores.
    void freshSignals() {
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        sigdelset(&all, SIGKILL);
        sigdelset(&all, SIGSTOP);
        int flags = POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
#ifdef POSIX_SPAWN_CLOEXEC_DEFAULT
        flags |= POSIX_SPAWN_CLOEXEC_DEFAULT; // includes descriptors that another thread has just opened
#endif
        keep(posix_spawnattr_setpgroup(&attributes, 0));
        keep(posix_spawnattr_setsigmask(&attributes, &none));
        keep(posix_spawnattr_setsigdefault(&attributes, &all));
        keep(posix_spawnattr_setflags(&attributes, static_cast<short>(flags)));
    }

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    int error = 0;

  private:
    void keep(int result) {
        if (error == 0) error = result;
    }
};

} // namespace

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        close();
        number_ = other.release();
    }
    return *this;
}

void FileDescriptor::close() {
    if (number_ >= 0) ::close(number_);
    number_ = -1;
}

int FileDescriptor::release() {
    return std::exchange(number_, -1);
}

tl::expected<ChildProcess, int> ChildProcess::start(const std::string& executable,
                                                    const std::vector<std::string>& arguments,
                                                    const FileDescriptor& standardOutput,
                                                    const FileDescriptor& standardError) {
    std::vector<std::string> words = {executable};
    words.insert(words.end(), arguments.begin(), arguments.end());
    // A NUL byte would truncate an argument, and the tool would act on something else.
    for (const auto& word : words)
        if (word.find('\0') != std::string::npos) return tl::unexpected(EINVAL);

    auto environment = toolEnvironment();
    SpawnSettings settings;
    settings.streams(standardOutput.get(), standardError.get());
    settings.freshSignals();
    if (settings.error != 0) return tl::unexpected(settings.error);

    pid_t id = 0;
    const int error = posix_spawn(&id, executable.c_str(), &settings.actions, &settings.attributes,
                                  pointers(words).data(), pointers(environment).data());
    if (error != 0) return tl::unexpected(error);
    return ChildProcess(id);
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept : id_(std::exchange(other.id_, 0)) {}

ChildProcess::~ChildProcess() {
    if (id_ == 0) return;
    signalGroup(SIGKILL);
    wait();
}

bool ChildProcess::hasEnded() const {
    if (id_ == 0) return true;
    siginfo_t ended{};
    // WNOWAIT keeps the process waitable, so its ID, and its group's, cannot be reused yet.
    const int result = waitid(P_PID, static_cast<id_t>(id_), &ended, WEXITED | WNOHANG | WNOWAIT);
    return result != 0 ? errno != EINTR : ended.si_pid != 0;
}

void ChildProcess::signalGroup(int signal) const {
    if (id_ != 0) kill(-id_, signal);
}

int ChildProcess::wait() {
    int status = 0;
    pid_t waited = 0;
    do {
        waited = waitpid(id_, &status, 0);
    } while (waited < 0 && errno == EINTR);
    id_ = 0;
    if (waited < 0) return unknownStatus;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace tidwen
