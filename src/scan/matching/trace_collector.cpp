#include "scan/matching/trace_collector.h"

#include "base/path.h"
#include "base/text.h"

#include <string_view>

namespace tidwen {

void TraceCollector::add(Trace trace) {
    if (const auto* path = movedPath(trace.action)) {
        trace.mayHoldOthers = trace.mayHoldOthers || policy_.mayBeInAnotherHome(*path);
        const auto info = files_.info(*path);
        if (info) trace.found = foundItem(*info, trace.category);
        paths_.insert(path->string());
        if (info && info->kind != FileKind::directory) {
            setSize(trace, {.allocatedBytes = info->allocatedBytes});
        } else {
            measured_.push_back(traces_.size());
            sizes_.add(*path);
        }
    }
    traces_.push_back(std::move(trace));
}

bool TraceCollector::addFound(Trace trace, const Path& realParent) {
    const Path& path = *movedPath(trace.action);
    if (!isValidUtf8(path.string())) {
        if (!policy_.check(path)) skip(path);
        return false;
    }
    if (isCovered(path) || policy_.check(path)) return false;
    const Path realPath = realParent / path.lastComponent();
    if (realPath != path) {
        if (isCovered(realPath) || policy_.check(realPath)) return false;
        paths_.insert(realPath.string());
        trace.mayHoldOthers = trace.mayHoldOthers || policy_.mayBeInAnotherHome(realPath);
    }
    add(std::move(trace));
    return true;
}

void TraceCollector::skip(const Path& path) {
    log_.warning("Left out, its name is not valid UTF-8: {}", printable(path.string()));
    skippedNames_.push_back(path);
}

std::vector<Trace> TraceCollector::take() {
    const auto sizes = sizes_.finish();
    for (std::size_t i = 0; i < measured_.size(); ++i)
        if (sizes[i]) setSize(traces_[measured_[i]], *sizes[i]);
    return std::move(traces_);
}

bool TraceCollector::isCovered(const Path& path) const {
    const std::string_view text = path.string();
    for (auto end = text.find('/', 1);; end = text.find('/', end + 1)) {
        if (paths_.contains(text.substr(0, end))) return true;
        if (end == text.npos) return false;
    }
}

} // namespace tidwen
