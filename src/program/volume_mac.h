#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/texts.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "program/mac.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

class HostServices;

/// A Mac volume in a folder of this machine, with the implementations of its ports.
class VolumeMac : public OwnedMac {
  public:
    /// `home`: the user to work for, as a Mac path; required when the volume has several homes. What is
    /// passed by reference must outlive the result. The error says what is unusable.
    static tl::expected<std::unique_ptr<VolumeMac>, Message> open(const std::filesystem::path& folder,
                                                                  const std::optional<std::string>& home,
                                                                  HostServices& host, const Texts& texts,
                                                                  Log& log);
    /// The same over other files, for a user of theirs; `folder`: where they lie on this machine.
    static std::unique_ptr<VolumeMac> over(std::unique_ptr<FileSystem> files, UserEnvironment user,
                                           std::filesystem::path folder, HostServices& host,
                                           const Texts& texts, Log& log);
    /// The homes to choose from where a volume has several; empty where that is not what is missing.
    static std::vector<std::string> homesToChoose(const std::filesystem::path& folder);
    ~VolumeMac() override;

    Mac& mac() override;

  private:
    struct Parts;
    explicit VolumeMac(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> parts_;
};

} // namespace tidwen
