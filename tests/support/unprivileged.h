#pragma once

#include <filesystem>
#include <functional>

namespace tidwen::test {

/// Runs the body in a child process and gives its exit status: what the body returns, 1 when one of its
/// expectations failed, 128 + the signal that ended it. Nothing the body does to its process outlives it.
int runInChild(const std::function<int()>& body);

/// The same as a user without rights (65534 when root runs the tests), whom the kernel refuses things.
int runUnprivileged(const std::function<int()>& body);

/// Both for a body that gives no status: the calling test fails when an expectation in the body did.
void inChild(const std::function<void()>& body);
void asUnprivileged(const std::function<void()>& body);

/// Makes a tree the unprivileged user's, without following links. Does nothing when not root.
void giveToUnprivileged(const std::filesystem::path& tree);

/// Makes the kernel answer a system call of this process with an error from now on, for good: only for a
/// child. False where that cannot be had.
bool refuseSystemCall(long number, int error);

} // namespace tidwen::test
