#include "base/property_list.h"
#include "platform/review_prompt.h"
#include "services/review_reminder.h"
#include "support/memory_defaults.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

namespace tidwen {
namespace {

class CountingPrompt : public ReviewPrompt {
  public:
    bool canShow() const override { return isWatched; }
    void show() override { ++shown; }

    bool isWatched = true;
    int shown = 0;
};

TEST(ReviewReminder, AsksAfterFiveSoundRemovalsOnceAVersion) {
    // "s": a removal without failure, "f": one with a failure, "u": one without failure that no one sees,
    // "2": a new version, "r": settings are read-only from now on, "d": a damaged count.
    const std::pair<const char*, int> cases[] = {
        {"ssss", 0},     {"sssss", 1},     {"ffffffffff", 0}, {"sfsfsfsfs", 1},   {"ssssssssssss", 1},
        {"ssssuuuu", 0}, {"ssssuuuus", 1}, {"sssss2ssss", 1}, {"sssss2sssss", 2}, {"ssss2s", 1},
        {"ssssrsss", 0}, {"dssss", 0},     {"dsssss", 1},
    };
    for (const auto& [events, shown] : cases) {
        test::MemoryDefaults defaults;
        CountingPrompt prompt;
        int version = 1;
        for (const char event : std::string_view(events)) {
            prompt.isWatched = event != 'u';
            if (event == '2')
                ++version;
            else if (event == 'r')
                defaults.isReadOnly = true;
            else if (event == 'd')
                defaults.values = {{ReviewReminder::countKey, PropertyListValue("many")}};
            else // each removal is a separate run of the program
                ReviewReminder(defaults, prompt, std::to_string(version)).removalEnded(event != 'f');
        }
        EXPECT_EQ(prompt.shown, shown) << events;
    }
}

} // namespace
} // namespace tidwen
