#include "cli/json/sweep.h"

#include "base/path.h"
#include "base/timestamp.h"
#include "cli/json/records.h"
#include "scan/matching/default_selection.h"
#include "sweep/sweep_gaps.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tidwen::json {

namespace {

Value object(const InstallerFile& file) {
    Value fields{{"url", value(file.url)}};
    put(fields, "sizeBytes", file.sizeBytes);
    if (file.isSizePartial) fields["isSizePartial"] = true;
    if (file.addedAt) fields["addedAt"] = iso8601(*file.addedAt);
    if (file.installedApp) fields["installedApp"] = value(*file.installedApp);
    return fields;
}

Value object(const SweepGap& gap) {
    return {{"place", value(gap.place)}, {"reason", name(gap.reason)}, {"isOfOthers", gap.isOfOthers}};
}

Value object(const Trace& trace, bool selectsDefaults, const Texts& texts) {
    Value fields = value(trace, texts);
    fields["isSelectedByDefault"] = selectsDefaults && takenByDefault(trace);
    return fields;
}

Value object(const OrphanGroup& group, bool selectsDefaults, const Texts& texts) {
    return {{"bundleID", group.bundleID},
            {"name", group.name},
            {"traces",
             array(group.traces, [&](const Trace& trace) { return object(trace, selectsDefaults, texts); })}};
}

void writeInParts(JsonStream& out, const OrphanGroup& group, bool selectsDefaults, const Texts& texts) {
    out.beginObject();
    out.key("bundleID");
    out.value(group.bundleID);
    out.key("name");
    out.value(group.name);
    out.key("traces");
    out.beginArray();
    out.values(group.traces.size(),
               [&](std::size_t i) { return object(group.traces[i], selectsDefaults, texts); });
    out.end();
    out.end();
}

void writeGroups(JsonStream& out, const std::vector<OrphanGroup>& groups, bool selectsDefaults,
                 const Texts& texts) {
    const auto isLarge = [](const OrphanGroup& group) {
        return group.traces.size() > 20;
    }; // and may be of any size
    for (auto group = groups.begin(); group != groups.end(); ++group) {
        const auto large = std::find_if(group, groups.end(), isLarge);
        out.values(static_cast<std::size_t>(large - group), [&](std::size_t i) {
            return object(group[static_cast<std::ptrdiff_t>(i)], selectsDefaults, texts);
        });
        if (large == groups.end()) return;
        writeInParts(out, *large, selectsDefaults, texts);
        group = large;
    }
}

} // namespace

void write(const OrphanScanResult& orphans, bool selectsDefaults, const Texts& texts,
           const JsonStream::Sink& sink) {
    JsonStream out(sink);
    out.beginObject();
    out.key("gaps");
    out.value(array(orphans.gaps, [](const SweepGap& gap) { return object(gap); }));
    out.key("groups");
    out.beginArray();
    writeGroups(out, orphans.groups, selectsDefaults, texts);
    out.end();
    out.key("leftOut");
    out.value(orphans.leftOut);
    out.key("skippedNames");
    out.value(array(orphans.skippedNames));
    out.key("unreadableLocations");
    out.value(array(orphans.unreadableLocations));
    out.end();
}

std::string document(const InstallerScanResult& installers, const Path& folder) {
    const auto unreadable = installers.unreadable ? std::vector{folder} : std::vector<Path>();
    return writeJson(
        {{"files", array(installers.files, [](const InstallerFile& file) { return object(file); })},
         {"skippedNames", array(installers.skippedNames)},
         {"unreadable", array(unreadable)}});
}

} // namespace tidwen::json
