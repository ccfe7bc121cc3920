#pragma once

#include "base/byte_sum.h"
#include "base/step_progress.h"
#include "base/texts.h"
#include "cli/console.h"
#include "operations/removal_operation.h"
#include "quarantine/manifest.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Names of records for people.
namespace tidwen::labels {

std::string category(TraceCategory category, const Texts& texts);
StyledText risk(TraceRisk risk, const Texts& texts);
std::string reason(const MatchReason& reason, const Texts& texts);
/// "3.9 MB", "over 3.9 MB"; empty if the size is unknown.
std::string size(std::optional<std::int64_t> bytes, bool isPartial, const Texts& texts);
template<class Record>
std::string size(const Record& record, const Texts& texts) {
    return size(record.sizeBytes, record.isSizePartial, texts);
}
/// Why it is not certain that the find belongs to its application alone: it is not selected by default then.
std::vector<std::string> doubts(const Trace& trace, const Texts& texts);
/// Special properties of removing the trace: needs an administrator, is claimed by others, cannot be undone.
std::vector<std::string> badges(const Trace& trace, const Texts& texts);
/// "Removing Kip… 3 of 12: move /Users/…": the work, the current step and how much of it is copied, in one
/// line of `columns`. The item is cut in its middle for that.
std::string progress(const std::string& work, const StepProgress& step, const Texts& texts,
                     std::size_t columns);
/// "move", "unload job": the kind of step.
std::string verb(const RemovalOperation::Kind& kind, const Texts& texts);
/// What the step acts on; empty when the verb is sufficient.
std::string subject(const RemovalOperation& step);

/// "12 items, 3.4 MB"; "1 item" without known sizes.
std::string countAndSize(std::size_t count, const ByteSum& sum, const Texts& texts);
std::string countAndSize(const std::vector<Trace>& traces, const Texts& texts);

/// The sum of the records' known sizes.
template<class Records>
ByteSum total(const Records& records) {
    ByteSum sum;
    for (const auto& record : records)
        sum.add(record.sizeBytes, record.isSizePartial);
    return sum;
}

} // namespace tidwen::labels
