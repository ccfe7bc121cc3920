#include "host/crash_recorder.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidwen::crashRecorder {

namespace {

constexpr int signals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGTRAP, SIGABRT};
constexpr int maxFrames = 64;

/// Fixed-size text that a handler can read at any time.
template<std::size_t N>
struct FixedText {
    char text[N] = {};

    void assign(std::string_view value) {
        const auto size = std::min(value.size(), N - 1);
        std::memcpy(text, value.data(), size);
        text[size] = '\0';
    }
    std::string_view view() const { return {text, ::strnlen(text, N)}; }
};

/// Everything the handlers use.
struct State {
    FixedText<2048> folder;
    FixedText<64> version;
    FixedText<64> activity;
    FixedText<1024> exception;
    std::atomic_flag isWriting = ATOMIC_FLAG_INIT;
    alignas(16) unsigned char handlerStack[256u << 10]; // unwinding takes some 10 KiB, a sanitizer more
};
State state; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): see the header

/// Builds a line without the heap.
class Line {
  public:
    Line& operator<<(std::string_view text) {
        const auto size = std::min(text.size(), sizeof buffer_ - size_);
        std::memcpy(buffer_ + size_, text.data(), size);
        size_ += size;
        return *this;
    }
    Line& operator<<(std::uint64_t number) {
        char digits[20];
        auto* first = digits + sizeof digits;
        do
            *--first = static_cast<char>('0' + number % 10);
        while ((number /= 10) != 0);
        return *this << std::string_view(first, static_cast<std::size_t>(digits + sizeof digits - first));
    }
    const char* text() { // NUL-terminated
        buffer_[std::min(size_, sizeof buffer_ - 1)] = '\0';
        return buffer_;
    }
    void writeTo(int file) const {
        for (std::size_t done = 0; done < size_;) {
            const auto written = ::write(file, buffer_ + done, size_ - done);
            if (written < 0 && errno == EINTR) continue;
            if (written <= 0) return;
            done += static_cast<std::size_t>(written);
        }
    }

  private:
    char buffer_[2048];
    std::size_t size_ = 0;
};

/// Opens the state folder; -1 when it cannot be created or is a link.
int openFolder() {
    auto& path = state.folder.text;
    for (auto* slash = std::strchr(path + 1, '/'); slash; slash = std::strchr(slash + 1, '/')) {
        *slash = '\0';
        ::mkdir(path, 0700);
        *slash = '/';
    }
    ::mkdir(path, 0700);
    return ::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

void writeRecord(int signal) {
    const int folder = openFolder();
    if (folder < 0) return;
    const auto now = static_cast<std::uint64_t>(std::time(nullptr));
    Line name;
    name << "crash-" << now << "-" << static_cast<std::uint64_t>(::getpid()) << ".record";
    const int file =
        ::openat(folder, name.text(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    ::close(folder);
    if (file < 0) return;
    Line about;
    about << "version " << state.version.view() << "\nactivity " << state.activity.view() << "\nsignal "
          << static_cast<std::uint64_t>(signal) << "\ntime " << now << "\nexception "
          << state.exception.view() << "\nframes\n";
    about.writeTo(file);
    void* frames[maxFrames];
    ::backtrace_symbols_fd(frames, ::backtrace(frames, maxFrames), file);
    ::close(file);
}

/// A second crash, while the record is written or in another thread, ends the process at once.
void onSignal(int signal) {
    if (!state.isWriting.test_and_set()) writeRecord(signal);
    // The signal stays blocked until this returns, and then ends the process as without a handler.
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

[[noreturn]] void onTerminate() {
    try {
        if (const auto thrown = std::current_exception()) std::rethrow_exception(thrown);
    } catch (const std::exception& exception) {
        state.exception.assign(exception.what());
        std::replace(std::begin(state.exception.text), std::end(state.exception.text), '\n', ' ');
    } catch (...) {
        state.exception.assign("of an unknown kind");
    }
    std::abort();
}

} // namespace

void install(const std::filesystem::path& folder, std::string_view version) {
    if (!folder.is_absolute() || folder.native().size() >= sizeof state.folder.text) return;
    state.folder.assign(folder.native());
    state.version.assign(version);

    void* frames[1];
    ::backtrace(frames, 1); // the first call loads the unwinder, which a handler must not do

    stack_t stack{};
    stack.ss_sp = state.handlerStack;
    stack.ss_size = sizeof state.handlerStack;
    ::sigaltstack(&stack, nullptr);
    struct sigaction action {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (const int signal : signals)
        ::sigaction(signal, &action, nullptr);
    std::set_terminate(onTerminate);
}

void note(std::string_view activity) {
    state.activity.assign(activity);
}

} // namespace tidwen::crashRecorder
