#pragma once

#include <string>
#include <vector>

namespace tidwen {

/// The languages that the user chose in System Settings, the dearest first, as "de-AT".
std::vector<std::string> preferredLanguages();

} // namespace tidwen
