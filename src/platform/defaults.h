#pragma once

#include "base/message.h"
#include "base/property_list.h"
#include "platform/folder_events.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tidwen {

/// The user's settings of this program: its defaults domain on a Mac, one property list elsewhere.
class Defaults {
  public:
    virtual ~Defaults() = default;
    virtual std::optional<PropertyListValue> value(const std::string& key) const = 0;
    /// Why the stored settings cannot be read and what the user can do; every value then reads as absent
    /// although it may be set. Nothing that relies on a setting to protect something may proceed. nullopt
    /// when all is well.
    virtual std::optional<Message> problem() const { return std::nullopt; }
    /// Stores at once; nothing removes the key. False when it could not be written: `whyNotStored` says why.
    virtual bool setValue(const std::string& key, const std::optional<PropertyListValue>& value) = 0;

    /// Of the last change that was not stored.
    virtual Message whyNotStored() const { return {"settings.store.failed"}; }

    using Change =
        std::function<std::optional<PropertyListValue>(const std::optional<PropertyListValue>& stored)>;
    /// Stores what `change` returns for the stored value. Atomic where several processes share the store.
    virtual bool update(const std::string& key, const Change& change) {
        return setValue(key, change(value(key)));
    }

    /// Calls `changed` from another thread when another process may have changed a value. Null where watching
    /// is not available.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): who watches keeps it
    virtual std::unique_ptr<FolderEvents::Watch> watch(std::function<void()>) { return nullptr; }
};

} // namespace tidwen
