#pragma once

namespace tidwen {

/// Whether the user switched on this application's extension of the Finder. False outside its bundle.
bool isFinderExtensionEnabled();

} // namespace tidwen
