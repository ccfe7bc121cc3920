#pragma once

#include "base/message.h"
#include "platform/user_environment.h"

#include <cstdint>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// What the system says of the account in which this process runs.
struct ProcessAccount {
    std::uint32_t realID = 0;
    std::uint32_t effectiveID = 0;
    std::string home; ///< of the account, whatever the environment says; empty when there is none
    /// The folders that macOS makes for the caches and the temporary files of a user; empty when it has none.
    std::string cacheFolder = {};
    std::string temporaryFolder = {};
    std::vector<std::string> personsHomes = {}; ///< of all accounts that people have here
};
ProcessAccount processAccount();

/// The user of the Mac that the program runs on. Root is refused: an application of his would be quit in no
/// session and looked for in nobody's keychain, and what the others own would move into his Trash.
tl::expected<UserEnvironment, Message> runningUser(const ProcessAccount& account);

} // namespace tidwen
