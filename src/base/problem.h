#pragma once

#include "base/message.h"
#include "base/texts.h"

#include <string>
#include <utility>
#include <vector>

namespace tidwen {

/// Why something was not done, and with what. Turned into words where it is shown, so that they are of the
/// language that is in use then.
struct Problem {
    std::string item = {}; ///< as it is shown; empty where the reason says it all
    Message reason;

    /// "/Library/Caches/x: Access was denied."
    std::string text(const Texts& texts) const {
        return item.empty() ? texts.text(reason) : item + ": " + texts.text(reason);
    }
    friend bool operator==(const Problem&, const Problem&) = default;
};

} // namespace tidwen
