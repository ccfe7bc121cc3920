#include "cli/json/startup.h"

#include "base/json.h"
#include "base/path.h"
#include "cli/json/records.h"
#include "system/startup_item.h"

#include <variant>

namespace tidwen::json {

namespace {

Value object(const StartupItem::Source& source) {
    return std::visit(Overloaded{[](const StartupItem::Plist& plist) {
                                     return Value{{"kind", "plist"}, {"url", value(plist.url)}};
                                 },
                                 [](const StartupItem::Embedded& embedded) {
                                     return Value{{"kind", "embedded"},
                                                  {"bundle", value(embedded.bundle)},
                                                  {"appName", embedded.appName}};
                                 }},
                      source);
}

Value object(const StartupItem::Owner& owner) {
    Value fields{{"kind", name(owner.kind)}};
    if (!owner.name.empty()) fields["name"] = owner.name;
    if (!owner.bundleID.empty()) fields["bundleID"] = owner.bundleID;
    if (!owner.path.empty()) fields["path"] = owner.path;
    return fields;
}

Value object(const StartupItem& item, const StartupItemsModel& model) {
    Value fields{{"id", item.id()},
                 {"label", item.label},
                 {"source", object(item.source)},
                 {"isSystemDomain", item.isSystemDomain},
                 {"owner", object(item.owner)},
                 {"switchState", name(model.switchState(item))}};
    put(fields, "programPath", item.programPath);
    return fields;
}

} // namespace

std::string document(const StartupItemsModel& model) {
    const auto& result = model.result.get();
    return writeJson(
        {{"items", array(result.items, [&](const StartupItem& item) { return object(item, model); })},
         {"leftOut", result.leftOut},
         {"unreadable", array(result.unreadable, [](const Path& path) { return value(path); })}});
}

std::string document(const PermissionAudit::Result& audit) {
    return writeJson(value(audit));
}

std::string document(const PermissionsModel& model) {
    return writeJson({{"fullDiskAccess", name(model.fullDiskAccess.get())},
                      {"finderExtension", model.finderExtension.get()}});
}

} // namespace tidwen::json
