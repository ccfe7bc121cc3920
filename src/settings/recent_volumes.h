#pragma once

#include "platform/defaults.h"

#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// A Mac volume that was open: its folder on this machine, and the user's home on the volume where one was
/// chosen.
struct RecentVolume {
    std::string folder;
    std::optional<std::string> home = {};
    friend bool operator==(const RecentVolume&, const RecentVolume&) = default;
};

/// The volumes opened last, kept with the settings, newest first. Thread-safe where the settings are.
class RecentVolumes {
  public:
    static constexpr const char* defaultsKey = "tidwen.recentVolumes";
    static constexpr std::size_t most = 8;

    /// `defaults` outlives it.
    explicit RecentVolumes(Defaults& defaults) : defaults_(defaults) {}

    std::vector<RecentVolume> all() const;
    /// Puts it first. That it could not be stored does no harm.
    void remember(const RecentVolume& volume);

  private:
    Defaults& defaults_;
};

} // namespace tidwen
