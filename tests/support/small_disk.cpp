#include "support/small_disk.h"

#include "support/temporary_folder.h"
#include "support/unprivileged.h"

#include <cstring>
#include <fmt/format.h>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>
#ifdef __linux__
#include <sched.h>
#include <sys/mount.h>
#endif

namespace tidwen::test {

#ifdef __linux__

namespace {

constexpr int refusedByKernel = 77;

/// A mount namespace of this process; without root's rights through a user namespace.
bool ownMountTable() {
    const auto user = ::geteuid(), group = ::getegid();
    if (::unshare(CLONE_NEWNS) == 0) return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << user << " " << user << " 1";
    std::ofstream("/proc/self/gid_map") << group << " " << group << " 1";
    return true;
}

} // namespace

std::optional<std::string> withSmallDisk(std::size_t bytes,
                                         const std::function<void(const std::filesystem::path& disk)>& body) {
    const TemporaryFolder place;
    const int status = runInChild([&] {
        const std::string options = fmt::format("size={},mode=0700", bytes);
        if (!ownMountTable() || ::mount("tmpfs", place.path().c_str(), "tmpfs", 0, options.c_str()) != 0)
            return refusedByKernel;
        body(place.path());
        return 0;
    });
    if (status == refusedByKernel) return "the kernel lets this user mount no disk of his own";
    EXPECT_EQ(status, 0) << "with a small disk";
    return std::nullopt;
}

bool mountAgain(const std::filesystem::path& folder, const std::filesystem::path& at) {
    return ::mount(folder.c_str(), at.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

bool makeReadOnly(const std::filesystem::path& disk) {
    return ::mount("none", disk.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

#else

std::optional<std::string> withSmallDisk(std::size_t,
                                         const std::function<void(const std::filesystem::path& disk)>&) {
    return "only Linux has disks of one process";
}

bool mountAgain(const std::filesystem::path&, const std::filesystem::path&) {
    return false;
}

bool makeReadOnly(const std::filesystem::path&) {
    return false;
}

#endif

} // namespace tidwen::test
