#pragma once

#include "base/message.h"
#include "base/property_list.h"
#include "platform/defaults.h"

#include <map>
#include <optional>
#include <string>

namespace tidwen::test {

/// Settings in memory; storing can be made to fail.
class MemoryDefaults : public Defaults {
  public:
    std::optional<PropertyListValue> value(const std::string& key) const override {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }
    std::optional<Message> problem() const override { return fault; }
    bool setValue(const std::string& key, const std::optional<PropertyListValue>& value) override {
        if (isReadOnly) return false;
        ++writes;
        if (value)
            values.insert_or_assign(key, *value);
        else
            values.erase(key);
        return true;
    }

    std::map<std::string, PropertyListValue> values;
    std::optional<Message> fault;
    bool isReadOnly = false;
    int writes = 0;
};

} // namespace tidwen::test
