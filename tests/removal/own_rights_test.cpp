#include "removal/own_rights.h"
#include "support/temporary_folder.h"
#include "support/unprivileged.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tidwen::test {
namespace {

namespace fs = std::filesystem;

RemovalOperation step(RemovalOperation::Kind kind) {
    RemovalOperation operation;
    operation.kind = std::move(kind);
    return operation;
}

TEST(ObstaclesToBegin, KeepAnApplicationWithItsData) {
    const TemporaryVolume volume;
    for (const auto* item : {"/Applications/A.app/a", "/open/cache", "/closed/log", "/closed/A.app/a"})
        volume.write(item, "");
    giveToUnprivileged(volume.hostRoot());
    fs::permissions(volume.host("/closed"), fs::perms(0555));
    const struct {
        std::vector<std::string> moved, obstacles;
    } cases[] = {
        {{}, {}},
        {{"/open/cache", "/Applications/A.app"}, {}},
        {{"/open/cache", "/closed/log", "/Applications/A.app"}, {}}, // the log fails alone
        {{"/open/cache", "/closed/log", "/closed/A.app"}, {"/closed/log", "/closed/A.app"}},
        {{"/closed/log"}, {"/closed/log"}},
        {{"/gone"}, {}}, // fails alone, and says so
    };
    EXPECT_EQ(runUnprivileged([&] {
                  const auto files = VolumeFileSystem::open(volume.hostRoot()).value();
                  for (const auto& c : cases) {
                      std::vector<RemovalOperation> plan;
                      for (const auto& item : c.moved) {
                          const Path source(item);
                          if (source.extension() == "app")
                              plan.push_back(step(operation::UnregisterApp{source}));
                          plan.push_back(step(operation::Move{source, Path("/to")}));
                      }
                      std::vector<std::string> found;
                      for (const auto& item : obstaclesToBegin(plan, *files))
                          found.push_back(item.string());
                      EXPECT_EQ(found, c.obstacles) << testing::PrintToString(c.moved);
                  }
                  return 0;
              }),
              0);
}

} // namespace
} // namespace tidwen::test
