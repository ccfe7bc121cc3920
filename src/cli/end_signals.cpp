#include "cli/end_signals.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace tidwen {

namespace {

constexpr char asked = 'a', done = 'd';

volatile std::sig_atomic_t writeEnd = -1; // the only way to reach it from a signal handler

void notify(char what) {
    const int kept = errno;
    (void)!::write(writeEnd, &what, 1);
    errno = kept;
}

void handle(int) {
    notify(asked);
}

} // namespace

EndSignals::EndSignals(Executor& main, std::function<void()> onAsked) {
    if (::pipe(pipe_.data()) != 0) return; // a signal then ends the program at once
    for (const int end : pipe_)
        (void)::fcntl(end, F_SETFD, FD_CLOEXEC);
    writeEnd = pipe_[1];
    thread_ = std::thread([&main, onAsked = std::move(onAsked), readEnd = pipe_[0]] {
        for (char what = 0; what != done;) {
            const auto got = ::read(readEnd, &what, 1);
            if (got == 1 && what == asked) main.post(onAsked);
            if (got == 0 || (got < 0 && errno != EINTR)) return;
        }
    });
    struct sigaction action {};
    action.sa_handler = handle;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        ::sigaction(numbers[i], nullptr, &before_[i]);
        const bool outlivesTerminal = numbers[i] == SIGHUP && before_[i].sa_handler == SIG_IGN; // nohup
        if (!outlivesTerminal) ::sigaction(numbers[i], &action, nullptr);
    }
}

EndSignals::~EndSignals() {
    if (!thread_.joinable()) return;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        ::sigaction(numbers[i], &before_[i], nullptr);
    notify(done);
    thread_.join();
    for (const int end : pipe_)
        ::close(end);
}

} // namespace tidwen
