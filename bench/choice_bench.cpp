// Measures the cost of a click in a long list of finds, including everything derived from the selection.
// Usage: choice_bench [FINDS]

#include "base/path.h"
#include "base/uuid.h"
#include "removal/findings.h"
#include "removal/removal_choice.h"
#include "removal/removal_subject.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "stopwatch.h"
#include "sweep/orphan_scanner.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

using namespace tidwen;

namespace {

/// Groups of ten; one of their ten items is in a folder of the group.
std::shared_ptr<const OrphanScanResult> finds(std::size_t count) {
    OrphanScanResult result;
    for (std::size_t i = 0; i < count; ++i) {
        const auto group = std::to_string(i / 10), item = std::to_string(i);
        if (i % 10 == 0) result.groups.push_back({"com.example." + group, "Group " + group, {}});
        const auto folder =
            "/Users/alice/Library/Caches/com.example." + std::to_string(i % 10 == 9 ? i - 1 : i);
        const Path path(i % 10 == 9 ? folder + "/" + item : folder);
        result.groups.back().traces.push_back(makeTrace(
            TraceCategory::caches, action::MovePath{path}, {MatchReason::Kind::exactBundleID, group},
            Reversibility::reversible, path.string(), static_cast<std::int64_t>(i), false));
    }
    return std::make_shared<const OrphanScanResult>(std::move(result));
}

} // namespace

int main(int argc, char** argv) {
    const std::size_t count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100'000;
    const auto swept = finds(count);
    std::vector<Uuid> all;
    for (const auto& group : swept->groups)
        for (const auto& trace : group.traces)
            all.push_back(trace.id);
    std::shared_ptr<const Findings> findings;
    const auto ready = bench::secondsOf(3, {[&] { findings = std::make_shared<const Findings>(swept); }});
    RemovalChoice choice(findings, RemovalSubject::Kind::leftovers);
    const auto seconds = bench::secondsOf(15, {[&] {
                                                   choice.setSelected(all, false);
                                                   choice.setSelected({*all.begin()}, true);
                                               },
                                               [&] { choice.setSelected(all, true); },
                                               [&] { choice.setSelected({*all.begin()}, false); }});
    std::printf("%zu finds, %d go\n", count, choice.summary().totalCount);
    bool holds = choice.summary().totalCount > 0;
    holds &= bench::printRatio("findings made ready, ms", ready[0] * 1e3, "<=", 400);
    holds &= bench::printRatio("nothing and one, ms (two changes)", seconds[0] * 1e3, "<=", 32);
    holds &= bench::printRatio("all, ms", seconds[1] * 1e3, "<=", 16);
    holds &= bench::printRatio("one less, ms", seconds[2] * 1e3, "<=", 16);
    return holds ? 0 : 1;
}
