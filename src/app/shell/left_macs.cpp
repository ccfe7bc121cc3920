#include "app/shell/left_macs.h"

#include "base/background_step.h"

#include <utility>

namespace tidwen {

void LeftMacs::add(std::unique_ptr<OpenMac> mac) {
    if (!mac) return;
    mac->close();
    auto* left = macs_.emplace_back(std::move(mac)).get();
    inBackground(
        *this, alive_, threads_, main_,
        [left] {
            left->finishWork();
            return left;
        },
        [](LeftMacs& self, const OpenMac* finished) {
            std::erase_if(self.macs_, [&](const auto& each) { return each.get() == finished; });
        });
}

} // namespace tidwen
