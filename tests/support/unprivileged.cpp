#include "support/unprivileged.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#endif

namespace tidwen::test {
namespace {

constexpr unsigned nobody = 65534;

} // namespace

int runInChild(const std::function<int()>& body) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        int status = 1;
        try {
            status = body();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "the child threw: %s\n", error.what());
        }
        if (testing::Test::HasFailure()) status = 1;
        std::fflush(nullptr);
        ::_exit(status);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int runUnprivileged(const std::function<int()>& body) {
    return runInChild([&] {
        if (::geteuid() == 0
            && (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0)) {
            std::perror("becoming unprivileged");
            return 1;
        }
        return body();
    });
}

void inChild(const std::function<void()>& body) {
    EXPECT_EQ(runInChild([&] { return body(), 0; }), 0) << "in a process of its own";
}

void asUnprivileged(const std::function<void()>& body) {
    EXPECT_EQ(runUnprivileged([&] { return body(), 0; }), 0) << "as a user without rights";
}

void giveToUnprivileged(const std::filesystem::path& tree) {
    if (::geteuid() != 0) return;
    const auto give = [](const std::filesystem::path& item) {
        if (::lchown(item.c_str(), nobody, nobody) != 0)
            throw std::system_error(errno, std::generic_category());
    };
    give(tree);
    if (std::filesystem::is_directory(std::filesystem::symlink_status(tree)))
        for (const auto& entry : std::filesystem::recursive_directory_iterator(tree))
            give(entry.path());
}

bool refuseSystemCall(long number, int error, std::optional<unsigned> third) {
#ifdef __linux__
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(number), 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
        BPF_JUMP(BPF_JMP | BPF_JA | BPF_K, 0, 0, 0), // replaced where the argument counts
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    if (third) rules[3] = BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, *third, 0, 1);
    const sock_fprog program{.len = std::size(rules), .filter = rules};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
           && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
#else
    (void)number, (void)error, (void)third;
    return false;
#endif
}

} // namespace tidwen::test
