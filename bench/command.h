#pragma once

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sched.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tidwen::bench {

using Command = std::vector<std::string>;

/// Runs a command without its output on the first `cores` cores. Gives its peak memory in KiB; ends the
/// program when it fails.
inline long run(const Command& command, int cores) {
    const auto child = ::fork();
    if (child == 0) {
        const int null = ::open("/dev/null", O_RDWR);
        ::dup2(null, 1);
        ::dup2(null, 2);
        cpu_set_t set;
        CPU_ZERO(&set);
        for (int core = 0; core < cores; ++core)
            CPU_SET(core, &set);
        ::sched_setaffinity(0, sizeof set, &set);
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
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return usage.ru_maxrss;
    std::fprintf(stderr, "%s failed\n", command.front().c_str());
    std::exit(1);
}

} // namespace tidwen::bench
