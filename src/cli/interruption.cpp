#include "cli/interruption.h"

#include <csignal>

namespace tidwen {

namespace {

volatile std::sig_atomic_t noted = 0; // set by a signal handler, which can reach nothing else

void note(int) {
    noted = 1;
    std::signal(SIGINT, SIG_DFL);
}

} // namespace

Interruption::Interruption() {
    noted = 0;
    std::signal(SIGINT, note);
}

Interruption::~Interruption() {
    std::signal(SIGINT, SIG_DFL);
}

bool Interruption::came() const { // NOLINT(readability-convert-member-functions-to-static): while it lives
    return noted != 0;
}

} // namespace tidwen
