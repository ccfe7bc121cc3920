#pragma once

#include "peak_memory.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#ifdef __linux__
#include <sched.h>
#endif

namespace tidwen::bench {

/// For measuring programs from outside: a command, and what running it takes.
using Command = std::vector<std::string>;

/// Leaves this process the first `cores` cores. A Mac has no call for it and runs it on all.
inline void keepTo([[maybe_unused]] int cores) {
#ifdef __linux__
    cpu_set_t set;
    CPU_ZERO(&set);
    for (int core = 0; core < cores; ++core)
        CPU_SET(core, &set);
    ::sched_setaffinity(0, sizeof set, &set);
#endif
}

/// Runs a command without its output on the first `cores` cores. Gives its peak memory in KiB; ends the
/// program when it fails.
inline long run(const Command& command, int cores) {
    const auto child = ::fork();
    if (child == 0) {
        const int null = ::open("/dev/null", O_RDWR);
        ::dup2(null, 1);
        ::dup2(null, 2);
        keepTo(cores);
        std::vector<char*> arguments;
        for (const auto& argument : command)
            arguments.push_back(const_cast<char*>(argument.c_str()));
        arguments.push_back(nullptr);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage = {};
    ::wait4(child, &status, 0, &usage);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return peakKiB(usage);
    std::fprintf(stderr, "%s failed\n", command.front().c_str());
    std::exit(1);
}

} // namespace tidwen::bench
