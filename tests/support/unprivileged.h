#pragma once

#include <filesystem>
#include <functional>
#include <optional>

namespace tidwen::test {

/// Runs the body in a child process and returns its exit status: the body's result, 1 when one of its
/// expectations failed, 128 + the signal that ended it. Process-wide effects of the body end with it.
int runInChild(const std::function<int()>& body);

/// The same as an unprivileged user (65534 when root runs the tests), to whom the kernel refuses access.
int runUnprivileged(const std::function<int()>& body);

/// Both for a body without a status: the calling test fails when an expectation in the body did.
void inChild(const std::function<void()>& body);
void asUnprivileged(const std::function<void()>& body);

/// Gives a tree to the unprivileged user, without following links. Does nothing when not root.
void giveToUnprivileged(const std::filesystem::path& tree);

/// Makes a system call of this process fail with an error from now on, irrevocably: only for a child. With
/// `third` only where that is its third argument. False
/// where this is not supported.
bool refuseSystemCall(long number, int error, std::optional<unsigned> third = {});

} // namespace tidwen::test
