#include "cli/json_sweep.h"

#include "base/json.h"
#include "cli/json_records.h"

namespace tidwen::json {

namespace {

constexpr auto toValue = [](const auto& record) { return value(record); };

Value object(const InstallerFile& file) {
    Value fields{{"url", value(file.url)}};
    put(fields, "sizeBytes", file.sizeBytes);
    if (file.addedAt) fields["addedAt"] = iso8601(*file.addedAt);
    if (file.installedApp) fields["installedApp"] = value(*file.installedApp);
    return fields;
}

} // namespace

std::string document(const OrphanScanResult& orphans) {
    return writeJson({{"groups", array(orphans.groups,
                                       [](const OrphanGroup& group) {
                                           return Value{{"bundleID", group.bundleID},
                                                        {"name", group.name},
                                                        {"traces", array(group.traces, toValue)}};
                                       })},
                      {"unreadableLocations", array(orphans.unreadableLocations, toValue)}});
}

std::string document(const InstallerScanResult& installers) {
    return writeJson(
        {{"files", array(installers.files, [](const InstallerFile& file) { return object(file); })},
         {"unreadable", installers.unreadable}});
}

} // namespace tidwen::json
