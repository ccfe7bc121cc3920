#include "scan/trace_collector.h"

#include "base/text.h"

namespace tidwen {

void TraceCollector::add(Trace trace) {
    if (const auto* path = movedPath(trace.action)) paths_.insert(path->string());
    traces_.push_back(std::move(trace));
}

void TraceCollector::addFound(Trace trace, const Path& realParent) {
    const Path& path = *movedPath(trace.action);
    if (!isValidUtf8(path.string())) {
        context_.log.warning("Left out, its name is not valid UTF-8: {}", printable(path.string()));
        return;
    }
    if (isCovered(path) || context_.policy.check(path)) return;
    if (realParent != path.parent() && context_.policy.check(realParent / path.lastComponent())) return;
    add(std::move(trace));
}

bool TraceCollector::isCovered(const Path& path) const {
    const std::string_view text = path.string();
    for (auto end = text.find('/', 1);; end = text.find('/', end + 1)) {
        if (paths_.contains(text.substr(0, end))) return true;
        if (end == text.npos) return false;
    }
}

} // namespace tidwen
