#pragma once

#include <functional>

namespace tidwen {

/// Tells once, on the main thread and when the program's launch has ended, whether the login started it. Call
/// it before the main loop runs.
void whenLaunched(std::function<void(bool isLogin)> told);

} // namespace tidwen
