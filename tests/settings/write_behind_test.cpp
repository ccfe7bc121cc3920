#include "base/executor.h"
#include "base/message.h"
#include "base/property_list.h"
#include "settings/app_tags.h"
#include "settings/write_behind_defaults.h"

#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/memory_defaults.h"

#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {
namespace {

/// Waits before it stores, as for another process.
class BusyStore : public Defaults {
  public:
    BusyStore(test::MemoryDefaults& kept, std::shared_future<void> free)
        : kept_(kept), free_(std::move(free)) {}
    std::optional<PropertyListValue> value(const std::string& key) const override { return kept_.value(key); }
    std::optional<Message> problem() const override { return kept_.problem(); }
    bool setValue(const std::string& key, const std::optional<PropertyListValue>& value) override {
        free_.wait();
        return kept_.setValue(key, value);
    }

  private:
    test::MemoryDefaults& kept_;
    std::shared_future<void> free_;
};

TEST(WriteBehindDefaults, ShowAChangeAtOnceAndTakeItBackIfItCannotBeStored) {
    for (const bool isReadOnly : {false, true}) {
        SCOPED_TRACE(isReadOnly);
        test::MemoryDefaults kept;
        kept.isReadOnly = isReadOnly;
        std::promise<void> free;
        MainQueue main;
        std::optional<WriteBehindDefaults> settings(
            std::in_place, std::make_unique<BusyStore>(kept, free.get_future().share()), main);
        std::vector<std::string> failures;
        const auto following =
            settings->failed.connect([&](const Message& why) { failures.push_back(why.key); });
        Texts texts;
        AppTags tags(*settings, texts);
        EXPECT_TRUE(tags.add(std::vector<std::string>{"com.a", "com.b"}, "Work"));
        EXPECT_TRUE(tags.add("com.a", "Home"));
        EXPECT_EQ(tags.tags("com.a"), (std::vector<std::string>{"Home", "Work"}));
        EXPECT_EQ(kept.writes, 0) << "the store is still busy";
        free.set_value();
        if (isReadOnly) {
            main.runUntil([&] { return failures.size() == 2; });
            tags.reload();
            EXPECT_THAT(tags.all(), testing::IsEmpty());
        } else {
            settings.reset(); // stores what is pending
            EXPECT_EQ(kept.writes, 2) << "one change for both applications";
            EXPECT_EQ(AppTags(kept, texts).tags("com.a"), (std::vector<std::string>{"Home", "Work"}));
        }
    }
}

TEST(WriteBehindDefaults, RefuseAChangeOfWhatCannotBeRead) {
    test::MemoryDefaults kept;
    kept.fault = Message{"unreadable"};
    MainQueue main;
    std::promise<void> free;
    free.set_value();
    WriteBehindDefaults settings(std::make_unique<BusyStore>(kept, free.get_future().share()), main);
    EXPECT_FALSE(settings.setValue("a", 1));
}

} // namespace
} // namespace tidwen
