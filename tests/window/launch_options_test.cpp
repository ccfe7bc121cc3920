// What the window is asked for by the words it is started with.

#include "app/shell/launch_options.h"
#include "base/texts.h"
#include "program/resources.h"

#include <QStringList>
#include <gmock/gmock.h>
#include <string>

namespace tidwen {
namespace {

using testing::HasSubstr;

TEST(LaunchOptions, NameWhatToOpenOrAreAnsweredInEveryLanguage) {
    const QString program = QStringLiteral("Tidwen");
    const auto english = Texts::load(TIDWEN_RESOURCES, "en");
    const auto opened = readLaunchOptions(
        {program, QStringLiteral("--volume"), QStringLiteral("/disk"), QStringLiteral("--home=/Users/bob")},
        english);
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened->volume, "/disk");
    EXPECT_EQ(opened->home, "/Users/bob");
    EXPECT_FALSE(opened->isSample);
    for (const auto* words : {"--colour", "--volume", "--sample=yes"}) {
        const auto refused = readLaunchOptions({program, QString::fromLatin1(words)}, english);
        ASSERT_FALSE(refused) << words;
        EXPECT_EQ(refused.error().status, 2);
        EXPECT_THAT(refused.error().text,
                    HasSubstr(std::string(words).substr(0, std::string(words).find('='))));
    }
    for (const auto& language : availableLanguages(TIDWEN_RESOURCES)) {
        const auto texts = Texts::load(TIDWEN_RESOURCES, language);
        const auto help = answerBeforeLaunch(
            {program, QStringLiteral("-platform"), QStringLiteral("offscreen"), QStringLiteral("-h")}, texts,
            "1.2");
        ASSERT_TRUE(help) << language;
        EXPECT_EQ(help->status, 0);
        for (const auto* word : {"--volume DIR", "--home PATH", "--sample", "--version"})
            EXPECT_THAT(help->text, HasSubstr(word)) << language;
        EXPECT_THAT(help->text, HasSubstr(texts.text("window.help.sample")));
    }
    EXPECT_EQ(answerBeforeLaunch({program, QStringLiteral("--version")}, english, "1.2")->text,
              "Tidwen 1.2\n");
    EXPECT_FALSE(answerBeforeLaunch({program, QStringLiteral("--sample")}, english, "1.2"));
    const auto without = answerBeforeLaunch({program}, Texts::load("/nowhere", "en"), "1.2");
    ASSERT_TRUE(without);
    EXPECT_EQ(without->status, 2);
    EXPECT_THAT(without->text, HasSubstr("TIDWEN_RESOURCES"));
}

} // namespace
} // namespace tidwen
