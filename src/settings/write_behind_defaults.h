#pragma once

#include "base/executor.h"
#include "base/message.h"
#include "base/observable.h"
#include "base/property_list.h"
#include "platform/defaults.h"
#include "platform/folder_events.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tidwen {

/// Settings for a window: a change is seen at once and stored behind, in order, on a thread of their own,
/// because the store may have to wait for another process and for the disk. A change that cannot be stored is
/// taken back and `failed` says why. Thread-safe but for `failed`; destroyed on the main thread, after
/// pending changes are stored.
///
/// A change is applied to what this process reads and again to what is stored, so it must not refer to its
/// caller, and applying it twice must be the same as once.
class WriteBehindDefaults : public Defaults {
  public:
    /// `main` outlives this object.
    WriteBehindDefaults(std::unique_ptr<Defaults> store, Executor& main);
    ~WriteBehindDefaults() override;
    WriteBehindDefaults(const WriteBehindDefaults&) = delete;
    WriteBehindDefaults& operator=(const WriteBehindDefaults&) = delete;

    std::optional<PropertyListValue> value(const std::string& key) const override;
    std::optional<Message> problem() const override { return store_->problem(); }
    /// These are false only if the settings cannot be read at all.
    bool setValue(const std::string& key, const std::optional<PropertyListValue>& value) override;
    bool update(const std::string& key, const Change& change) override;
    Message whyNotStored() const override { return store_->whyNotStored(); }
    /// `changed` is called as well after a change was taken back.
    std::unique_ptr<FolderEvents::Watch> watch(std::function<void()> changed) override;

    /// Emitted on the main thread for each change that could not be stored.
    Signal<const Message&> failed;

  private:
    struct Pending;

    void store(std::uint64_t number, const std::string& key, const Change& change);

    std::unique_ptr<Defaults> store_;
    Executor& main_;
    std::unique_ptr<Pending> pending_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    WorkQueue queue_; ///< last: it ends before what its work uses is destroyed
};

} // namespace tidwen
