#pragma once

#include "platform/keychain.h"

#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

class ProcessRunner;

/// The services of the password items in the output of "security dump-keychain", with their number, in
/// first-seen order. Uses the hexadecimal form of a value if present, else the text between the first and the
/// last quote.
std::vector<KeychainEntry> parseKeychainDump(std::string_view output, bool isSystemKeychain);

/// Items by their services, in first-seen order; a service that is empty or not UTF-8 names none.
std::vector<KeychainEntry> countedServices(std::vector<std::string> services, bool isSystemKeychain);

/// The system keychain of the running Mac, without secrets. Empty when it cannot be read.
std::vector<KeychainEntry> listSystemKeychain(ProcessRunner& processes);

} // namespace tidwen
