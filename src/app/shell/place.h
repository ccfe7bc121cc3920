#pragma once

namespace tidwen {

/// The screens to go to.
enum class Place { applications, leftovers, installers, startupItems, history };

} // namespace tidwen
