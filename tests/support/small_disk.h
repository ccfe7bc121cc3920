#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tidwen::test {

/// Runs the body in a child process with a folder that is a separate disk of about `bytes` bytes, visible
/// only to that process. Returns the reason if the kernel does not permit this, for GTEST_SKIP; otherwise the
/// calling test fails if an expectation in the body failed.
std::optional<std::string> withSmallDisk(std::size_t bytes,
                                         const std::function<void(const std::filesystem::path& disk)>& body);

/// Mounts a folder a second time at another place. Only inside the body.
bool mountAgain(const std::filesystem::path& folder, const std::filesystem::path& at);

/// Forbids every change on that disk from now on. Only inside the body.
bool makeReadOnly(const std::filesystem::path& disk);

} // namespace tidwen::test
