#include "app/models/trace_words.h"

#include "app/models/find_row.h"
#include "app/widgets/words.h"
#include "base/byte_sum.h"
#include "base/path.h"
#include "scan/policy/trace_category.h"

#include <QStringList>
#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace tidwen {

QString traceTitle(const Trace& trace, const Texts& texts) {
    const auto* path = movedPath(trace.action);
    return shown(path ? path->lastComponent() : displayName(trace, texts));
}

QString tracePlace(const Trace& trace, const UserEnvironment& user) {
    const auto* path = movedPath(trace.action);
    return path ? shortPath(path->parent(), user) : QString();
}

QString shortPath(const Path& path, const UserEnvironment& user) {
    const auto& text = path.string();
    const auto& home = user.home.string();
    return shown(path.isWithin(user.home) ? "~" + text.substr(home.size()) : text);
}

QString traceReason(const Trace& trace, const Texts& texts) {
    const auto& reason = trace.reason;
    auto key = "reason." + std::string(name(reason.kind));
    if (reason.evidence != MatchReason::Evidence::itsName) key += "." + std::string(name(reason.evidence));
    if (reason.kind == MatchReason::Kind::declaredTarget) return words(texts, key);
    return words(texts, key + " %@", {shown(reason.value).toStdString()});
}

QString traceBadge(const Trace& trace, const Texts& texts) {
    if (trace.contestedBy)
        return words(texts, "review.badge.contested %@", {shown(trace.contestedBy->name).toStdString()});
    if (trace.isOnlyListed || trace.mayHoldOthers || trace.ownerUnsure)
        return words(texts, "review.badge.unsure");
    if (trace.reversibility == Reversibility::irreversibleDestructive)
        return words(texts, "review.badge.permanent");
    if (trace.reversibility == Reversibility::irreversibleHarmless)
        return words(texts, "review.badge.notUndone");
    if (trace.requiresRoot) return words(texts, "review.badge.needsPassword");
    if (trace.risk == TraceRisk::review) return words(texts, "review.badge.unsure");
    return {};
}

QString traceIcon(const Trace& trace) {
    switch (trace.category) {
    case TraceCategory::application:
        return QStringLiteral("applications");
    case TraceCategory::permissions:
    case TraceCategory::keychain:
        return QStringLiteral("lock");
    case TraceCategory::launchItems:
    case TraceCategory::privilegedTools:
    case TraceCategory::systemExtensions:
        return QStringLiteral("service");
    default:
        break;
    }
    constexpr std::array<std::string_view, 8> files = {"plist", "log", "bom",   "binarycookies",
                                                       "ips",   "dmg", "crash", "pkg"};
    const auto* path = movedPath(trace.action);
    const auto extension = path ? path->lowercasedExtension() : std::string();
    return std::ranges::find(files, extension) == files.end() ? QStringLiteral("folder")
                                                              : QStringLiteral("file");
}

QVariant traceData(const Trace& trace, int role, std::int64_t largest, const Texts& texts) {
    switch (role) {
    case Qt::DisplayRole:
        return traceTitle(trace, texts);
    case FindRow::badge:
        return traceBadge(trace, texts);
    case FindRow::badgeRisk:
        return static_cast<int>(trace.reversibility == Reversibility::irreversibleHarmless ? TraceRisk::safe
                                                                                           : trace.risk);
    case FindRow::share:
        return trace.sizeBytes ? static_cast<double>(*trace.sizeBytes) / static_cast<double>(largest) : -1.0;
    case FindRow::icon:
        return traceIcon(trace);
    case FindRow::size:
        return QString::fromStdString(trace.sizeBytes ? sizeText(*trace.sizeBytes, trace.isSizePartial, texts)
                                                      : std::string());
    case Qt::ToolTipRole:
        return (shown(displayName(trace, texts)) + QLatin1Char('\n') + traceReason(trace, texts))
            .toHtmlEscaped();
    default:
        return {};
    }
}

QString spokenTrace(const Trace& trace, const SpokenState& state, const Texts& texts) {
    QStringList parts = {traceTitle(trace, texts),
                         words(texts, "risk." + std::string(name(trace.risk)) + ".title"),
                         traceData(trace, FindRow::size, 1, texts).toString()};
    if (state.isSelected) parts << words(texts, "row.selected");
    parts << state.badge << traceReason(trace, texts);
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

QString stepWords(const StepProgress& step, const Texts& texts, const UserEnvironment& user) {
    auto line = words(texts, "work.step %lld %lld", {std::to_string(step.step), std::to_string(step.total)});
    for (const auto& key : {"cli.step." + step.kind, "category." + step.kind}) // of a removal, of a search
        if (const auto verb = words(texts, key); verb != QString::fromStdString(key))
            line += QStringLiteral(" · ") + verb;
    if (!step.item.empty()) line += QStringLiteral(" · ") + shortPath(Path(step.item), user);
    if (step.copiedBytes > 0)
        line += QStringLiteral(", ")
                + words(texts, "cli.progress.copied %@",
                        {sizeWords(static_cast<std::int64_t>(step.copiedBytes), texts).toStdString()});
    return line;
}

} // namespace tidwen
