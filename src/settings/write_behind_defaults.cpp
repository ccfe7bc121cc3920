#include "settings/write_behind_defaults.h"

#include <list>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace tidwen {

struct WriteBehindDefaults::Pending {
    struct Entry {
        std::string key;
        Change change;
    };
    std::mutex mutex;
    std::uint64_t last = 0;
    std::map<std::uint64_t, Entry> changes; ///< by number, in the order in which they are stored
    std::list<std::weak_ptr<std::function<void()>>> watchers;
};

namespace {

struct TwofoldWatch : FolderEvents::Watch {
    std::shared_ptr<std::function<void()>> changed;
    std::unique_ptr<FolderEvents::Watch> ofStore;
};

} // namespace

WriteBehindDefaults::WriteBehindDefaults(std::unique_ptr<Defaults> store, Executor& main)
    : store_(std::move(store)), main_(main), pending_(std::make_unique<Pending>()) {}

WriteBehindDefaults::~WriteBehindDefaults() = default;

std::optional<PropertyListValue> WriteBehindDefaults::value(const std::string& key) const {
    const std::lock_guard guard(pending_->mutex);
    auto value = store_->value(key);
    for (const auto& [number, each] : pending_->changes)
        if (each.key == key) value = each.change(value);
    return value;
}

bool WriteBehindDefaults::setValue(const std::string& key, const std::optional<PropertyListValue>& value) {
    return update(key, [value](const auto&) { return value; });
}

bool WriteBehindDefaults::update(const std::string& key, const Change& change) {
    if (problem()) return false;
    const std::lock_guard guard(pending_->mutex);
    const auto number = ++pending_->last;
    pending_->changes.emplace(number, Pending::Entry{key, change});
    queue_.post([this, number, key, change] { store(number, key, change); });
    return true;
}

void WriteBehindDefaults::store(std::uint64_t number, const std::string& key, const Change& change) {
    const bool isStored = store_->update(key, change);
    const auto why = isStored ? std::nullopt : std::optional(store_->whyNotStored());
    std::vector<std::shared_ptr<std::function<void()>>> watchers;
    {
        const std::lock_guard guard(pending_->mutex);
        pending_->changes.erase(number);
        if (isStored) return;
        for (const auto& each : pending_->watchers)
            if (auto watcher = each.lock()) watchers.push_back(std::move(watcher));
    }
    for (const auto& watcher : watchers)
        (*watcher)();
    main_.post([this, why = *why, alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) failed.emit(why);
    });
}

std::unique_ptr<FolderEvents::Watch> WriteBehindDefaults::watch(std::function<void()> changed) {
    auto watch = std::make_unique<TwofoldWatch>();
    watch->ofStore = store_->watch(changed);
    if (!watch->ofStore) return nullptr;
    watch->changed = std::make_shared<std::function<void()>>(std::move(changed));
    const std::lock_guard guard(pending_->mutex);
    std::erase_if(pending_->watchers, [](const auto& each) { return each.expired(); });
    pending_->watchers.push_back(watch->changed);
    return watch;
}

} // namespace tidwen
