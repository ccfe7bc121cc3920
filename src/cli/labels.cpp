#include "cli/labels.h"

#include "base/byte_count.h"
#include "base/text.h"
#include "cli/line_layout.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>

namespace tidwen::labels {

std::string category(TraceCategory category, const Texts& texts) {
    return texts.text("category." + std::string(name(category)));
}

StyledText risk(TraceRisk risk, const Texts& texts) {
    const auto title = texts.text("risk." + std::string(name(risk)) + ".title");
    switch (risk) {
    case TraceRisk::safe:
        return {title, Style::good};
    case TraceRisk::review:
        return {title, Style::caution};
    case TraceRisk::sensitive:
        return {title, Style::danger};
    }
    return {title};
}

std::string reason(const MatchReason& reason, const Texts& texts) {
    auto key = "reason." + std::string(name(reason.kind));
    if (reason.evidence != MatchReason::Evidence::itsName) key += "." + std::string(name(reason.evidence));
    if (reason.kind == MatchReason::Kind::declaredTarget) return texts.text(key);
    return texts.text(key + " %@", {reason.value});
}

std::string size(std::optional<std::int64_t> bytes, bool isPartial, const Texts& texts) {
    return bytes ? sizeText(*bytes, isPartial, texts) : std::string();
}

std::vector<std::string> doubts(const Trace& trace, const Texts& texts) {
    std::vector<std::string> result;
    if (trace.contestedBy) {
        const auto& other = *trace.contestedBy;
        result.push_back(
            texts.text("cli.badge.contested %@ %@",
                       {other.bundleID.empty() ? other.name : other.bundleID, other.place.string()}));
    }
    if (trace.isOnlyListed) result.push_back(texts.text("cli.badge.onlyListed"));
    if (trace.mayHoldOthers) result.push_back(texts.text("cli.badge.mayHoldOthers"));
    if (trace.ownerUnsure) result.push_back(texts.text("left.ownerUnsure"));
    return result;
}

std::vector<std::string> badges(const Trace& trace, const Texts& texts) {
    auto result = doubts(trace, texts);
    if (trace.requiresRoot) result.insert(result.begin(), texts.text("cli.badge.administrator"));
    switch (trace.reversibility) {
    case Reversibility::reversible:
        break;
    case Reversibility::irreversibleHarmless:
        result.push_back(texts.text("cli.badge.notUndone"));
        break;
    case Reversibility::irreversibleDestructive:
        result.push_back(texts.text("cli.badge.permanent"));
        break;
    case Reversibility::manualOnly:
        result.push_back(texts.text("cli.badge.byHand"));
        break;
    }
    return result;
}

namespace {

/// The number of the step and its verb.
std::string stepWords(const std::string& work, const StepProgress& step, const Texts& texts) {
    auto line = texts.text("cli.progress %@ %lld %lld",
                           {work, std::to_string(step.step), std::to_string(step.total)});
    const auto key = "cli.step." + step.kind;
    const auto verb = texts.text(key);
    // Steps of a search have no verb, and these have the one of the work.
    const bool isSaid = verb == key || step.kind == "purge" || step.kind == "recover";
    const std::string what = isSaid ? "" : verb;
    if (!what.empty() || !step.item.empty()) line += ": " + what;
    if (!what.empty() && !step.item.empty()) line += " ";
    return line;
}

} // namespace

std::string progress(const std::string& work, const StepProgress& step, const Texts& texts,
                     std::size_t columns) {
    constexpr std::size_t least = 9; // of which something is to be seen
    std::string copied;
    if (step.copiedBytes > 0)
        copied =
            ", "
            + texts.text("cli.progress.copied %@",
                         {formatByteCount(static_cast<std::int64_t>(step.copiedBytes), texts.language())});
    auto line = stepWords(work, step, texts);
    const auto fixed = [&] { return displayWidth(printable(line)) + displayWidth(copied); };
    const auto wanted = fixed() + std::min(displayWidth(printable(step.item)), least);
    if (wanted > columns) { // the work is known, the number is not
        const auto wide = displayWidth(printable(work)), over = wanted - columns;
        line = stepWords(cutInMiddle(work, std::max(least, wide - std::min(wide, over))), step, texts);
    }
    const auto taken = fixed();
    return line + cutInMiddle(step.item, columns < taken + least ? least : columns - taken) + copied;
}

std::string verb(const RemovalOperation::Kind& kind, const Texts& texts) {
    return texts.text("cli.step." + std::string(kindName(kind)));
}

std::string subject(const RemovalOperation& step) {
    if (const auto* unregister = std::get_if<operation::UnregisterApp>(&step.kind))
        return unregister->bundleURL.string();
    return std::holds_alternative<operation::FlushPreferences>(step.kind) ? std::string() : step.displayName;
}

std::string countAndSize(std::size_t count, const ByteSum& sum, const Texts& texts) {
    const auto number = std::to_string(count);
    return sum.isKnown ? texts.text("review.header.summary %lld %@", {number, sizeText(sum, texts)})
                       : texts.text("review.header.count %lld", {number});
}

std::string countAndSize(const std::vector<Trace>& traces, const Texts& texts) {
    return countAndSize(traces.size(), total(traces), texts);
}

} // namespace tidwen::labels
