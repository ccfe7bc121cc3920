#include "base/path.h"
#include "base/texts.h"
#include "scan/applications/installed_app.h"
#include "sweep/installer_scanner.h"
#include "sweep/installers_model.h"

#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {
namespace {

const std::string downloads = "/Users/alice/Downloads/";

TEST(InstallersModel, StreamsSizesKeepsTheChoiceAndFollowsTheFolder) {
    const test::TemporaryVolume volume;
    volume.write(downloads + "Quillpad-2.dmg", std::string(10'000, 'x'));
    volume.write(downloads + "quillpad-1.pkg", std::string(20'000, 'x'));
    volume.write(downloads + "Other.mpkg/part", std::string(90'000, 'x'));
    volume.write(downloads + "Another.dmg", "x");
    InstalledApp app;
    app.name = "Quillpad";
    test::SteppedQueues queues;
    const Texts texts;
    std::optional<InstallersModel> model(
        std::in_place,
        InstallersModel::Ports{volume.files(), test::alice(), texts, queues.main, queues.background},
        [&] { return std::vector{app}; });
    const auto shown = [&] {
        return eachOf(model->rows.rows(),
                      [](const InstallerRow& row) { return (row.isSelected ? "+" : "") + row.key().stem(); });
    };
    int loads = 0;
    const auto load = [&] { model->load([&] { ++loads; }); };
    load();
    load(); // the same load serves both
    queues.background.drain();
    queues.main.drain();
    EXPECT_FALSE(model->hasLoaded.get());
    EXPECT_THAT(shown(), ElementsAre("quillpad-1", "Quillpad-2", "Another", "Other"));
    model->toggleSelection(Path(downloads + "Other.mpkg"));
    model->toggleSelection(Path("/etc/passwd"));
    queues.settle();
    EXPECT_EQ(loads, 2);
    EXPECT_THAT(shown(), ElementsAre("quillpad-1", "Quillpad-2", "+Other", "Another"));
    EXPECT_GE(model->result.get().files.front().sizeBytes.value_or(0), 90'000);
    EXPECT_EQ(model->selectedTraces().front().sizeBytes, model->result.get().files.front().sizeBytes);

    model->toggleSelectAllMatched();
    EXPECT_EQ(model->selectedFiles().size(), 3u);
    model->toggleSelectAllMatched();
    EXPECT_EQ(model->selectedFiles().size(), 1u);
    model->setOrder(InstallersModel::Order::name);
    EXPECT_THAT(shown(), ElementsAre("quillpad-1", "Quillpad-2", "Another", "+Other"));
    std::filesystem::remove_all(volume.host(downloads + "Other.mpkg"));
    load();
    queues.settle();
    EXPECT_THAT(shown(), ElementsAre("quillpad-1", "Quillpad-2", "Another"));
    EXPECT_THAT(model->selection.get(), IsEmpty());
    std::filesystem::remove_all(volume.host(downloads));
    load();
    queues.settle();
    EXPECT_TRUE(model->result.get().unreadable);
    EXPECT_THAT(shown(), IsEmpty());
    load();
    model.reset(); // while it loads
    queues.settle();
    EXPECT_EQ(loads, 4);
}

} // namespace
} // namespace tidwen
