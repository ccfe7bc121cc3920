#pragma once

#include "platform/keychain.h"

#include <string_view>
#include <vector>

namespace tidwen {

class ProcessRunner;

/// Services of the password items in the output of "security dump-keychain", counted, in first-seen order.
/// Values are taken from their hexadecimal part where there is one, else between the first and the last
/// quote.
std::vector<KeychainEntry> parseKeychainDump(std::string_view output, bool isSystemKeychain);

/// The system keychain of the running Mac, listed without its secrets. Empty when it cannot be had.
std::vector<KeychainEntry> listSystemKeychain(ProcessRunner& processes);

} // namespace tidwen
