#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tidwen::test {

/// Runs the body in a child process with a folder that is a disk of its own of about `bytes` bytes, seen by
/// that process alone. Gives the reason when the kernel allows no such thing here, for GTEST_SKIP; otherwise
/// the calling test fails when an expectation in the body did.
std::optional<std::string> withSmallDisk(std::size_t bytes,
                                         const std::function<void(const std::filesystem::path& disk)>& body);

/// Mounts a folder once more at another place. Only inside the body.
bool mountAgain(const std::filesystem::path& folder, const std::filesystem::path& at);

/// Forbids every change on that disk from now on. Only inside the body.
bool makeReadOnly(const std::filesystem::path& disk);

} // namespace tidwen::test
