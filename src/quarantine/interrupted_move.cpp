#include "quarantine/interrupted_move.h"

namespace tidwen {

void settleInterruptedMove(const Path& from, const Path& to, FileSystem& files, const PathPolicy& policy) {
    if (policy.checkMove(from, to, files)) return;
    // Moves go along resolved parents, so that is where their remains lie.
    const auto realFrom = files.resolveParent(from);
    const auto realTo = files.resolveParent(to);
    // Remains that cannot be settled now stay where they are and are found the next time.
    if (realFrom && realTo) (void)files.settleInterruptedMove(*realFrom, *realTo);
}

} // namespace tidwen
