#include "app/models/trace_words.h"

#include "app/widgets/words.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tidwen {

QString traceTitle(const Trace& trace) {
    const auto* path = movedPath(trace.action);
    return shown(path ? path->lastComponent() : trace.displayName);
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
    if (trace.isOnlyListed || trace.mayHoldOthers) return words(texts, "review.badge.unsure");
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

} // namespace tidwen
