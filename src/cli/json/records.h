#pragma once

#include "base/path.h"
#include "base/texts.h"
#include "operations/removal_operation.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_app.h"
#include "scan/matching/trace.h"
#include "scan/permissions/permission_audit.h"

#include <nlohmann/json.hpp>
#include <optional>

/// The records inside the documents of json/output.h, as JSON values.
namespace tidwen::json {

using Value = nlohmann::json;

/// Adds a field to an object; an absent optional is omitted.
template<class T>
void put(Value& object, const char* key, const std::optional<T>& value) {
    if (value) object[key] = *value;
}

template<class Records, class ToValue>
Value array(const Records& records, ToValue toValue) {
    Value result = Value::array();
    for (const auto& record : records)
        result.push_back(toValue(record));
    return result;
}

/// For `std::visit` over the alternatives of a payload.
template<class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template<class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

Value value(const Path& path);
Value value(const AppTarget& target);
Value value(const InstalledApp& app);
Value value(const Trace& trace, const Texts& texts);
Value value(const PermissionGrant& grant);
Value value(const PermissionAudit::Result& audit);
Value value(const RemovalOperation& operation, const Texts& texts);

/// Of records whose value needs no texts.
template<class Records>
Value array(const Records& records) {
    return array(records, [](const auto& record) { return value(record); });
}

} // namespace tidwen::json
