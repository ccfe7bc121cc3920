#pragma once

namespace tidwen {

/// This process runs the main program of a bundle. Notifications, login items and extensions are a bundle's;
/// for any other process the system's calls for them throw or fail.
bool isMainProgramOfBundle();

} // namespace tidwen
