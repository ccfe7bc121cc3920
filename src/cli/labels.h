#pragma once

#include "base/step_progress.h"
#include "base/texts.h"
#include "cli/console.h"
#include "operations/removal_operation.h"
#include "quarantine/manifest.h"
#include "scan/matching/trace.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What records are called in front of people.
namespace tidwen::labels {

std::string category(TraceCategory category, const Texts& texts);
Span risk(TraceRisk risk, const Texts& texts);
std::string reason(const MatchReason& reason, const Texts& texts);
/// "3.9 MB"; empty when the size is not known.
std::string size(std::optional<std::int64_t> bytes, const Texts& texts);
/// What is special about taking the trace: needs an administrator, is claimed by others, cannot be undone.
std::vector<std::string> badges(const Trace& trace, const Texts& texts);
/// "Removing Kip… 3 of 12: move /Users/…": work, the step at hand, and how much of it is copied.
std::string progress(const std::string& work, const StepProgress& step, const Texts& texts);
/// "move", "unload job": what a step does.
std::string verb(const RemovalOperation::Kind& kind, const Texts& texts);
/// What the step is done to; empty when the verb says it all.
std::string subject(const RemovalOperation& step);
/// "Marlin Notes, Kip".
std::string names(const std::vector<AppRecord>& apps);

/// "12 items, 3.4 MB".
std::string countAndSize(std::size_t count, std::int64_t bytes, const Texts& texts);
std::string countAndSize(const std::vector<Trace>& traces, const Texts& texts);
/// The sum of the known sizes.
std::int64_t totalBytes(const std::vector<Trace>& traces);

} // namespace tidwen::labels
