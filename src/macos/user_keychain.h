#pragma once

#include "platform/keychain.h"
#include "platform/process_runner.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tidwen {

/// The default keychain of the user, and of the system keychain what its own tool lists. Nothing here
/// prompts: what would need an unlocked keychain or a person's consent fails instead. Any thread.
class UserKeychain : public Keychain {
  public:
    /// `file`: a keychain to take for the user's own; his default one when empty.
    explicit UserKeychain(ProcessRunner& processes, std::string file = {});

    std::vector<KeychainEntry> entries() const override;
    std::int32_t deleteItems(KeychainItemClass itemClass, const std::string& service) override;

  private:
    ProcessRunner& processes_;
    std::string file_;
};

} // namespace tidwen
