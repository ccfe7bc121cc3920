#include "app/models/own_services.h"
#include "app/models/spoken_language.h"
#include "app/shell/launch.h"
#include "app/shell/launch_options.h"
#include "app/shell/mac_opener.h"
#include "app/shell/main_loop.h"
#include "app/shell/main_window.h"
#include "app/shell/opened_files.h"
#include "app/style/appearance.h"
#include "app/style/style.h"
#include "base/executor.h"
#include "base/log.h"
#include "base/texts.h"
#include "host/application_login_item.h"
#include "host/crash_recorder.h"
#include "host/crash_reports.h"
#include "program/host_log.h"
#include "program/host_services.h"
#include "program/resources.h"
#include "program/this_mac.h"
#include "settings/app_preferences.h"

#include <QApplication>
#include <QIcon>
#include <QStringList>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#ifdef __APPLE__
#include "macos/launch_reason.h"
#endif

namespace {

using namespace tidwen;

/// Only a Mac starts the window's program at a login.
Launch::Reason launchReason() {
#ifdef __APPLE__
    return whenLaunched;
#else
    return [](const auto& told) { told(false); };
#endif
}

/// The texts in the language of the settings, before there is a window.
Texts spoken(const std::filesystem::path& resources) {
    HostLog log(LogLevel::error);
    return Texts::load(resources,
                       spokenLanguage(resources, AppPreferences(*hostDefaults(log)).language.get()));
}

int print(const LaunchAnswer& answer) {
    std::fputs(answer.text.c_str(), answer.status == 0 ? stdout : stderr);
    return answer.status;
}

int run(QApplication& application, const char* program) {
    const auto resources = findResources(program);
    auto texts = Texts::load(resources, "en");
    const auto options = readLaunchOptions(QApplication::arguments(), spoken(resources));
    if (!options) return print(options.error());

    HostLog log(LogLevel::error);
    MainLoop main;
    HostServices host({programFile(program).string()}, log);
    SeparateThreads background;
    MacOpener opener(host, texts, log, main, background);
    OwnServices own(host, log, main, {TIDWEN_VERSION, TIDWEN_FEED_KEY, TIDWEN_FEED_ADDRESS},
                    availableLanguages(resources));
    SpokenLanguage language(texts, resources, own.settings().preferences().language);
    MainWindow window({opener, language, main, background, own, findOwnBundle(program)});
    const OpenedFiles opened([&](auto paths) { window.takeFiles(std::move(paths)); });
    if (options->volume)
        window.open(*options->volume, options->home);
    else if (options->isSample)
        window.openSample();
    else if (const auto running = thisMac())
        window.openRunning(running);
    Launch launch({[&] { window.show(); }, [&] { window.comeBack(); }, [&] { return window.isOpening(); },
                   [&] { return window.isNeeded(); }, [] { QApplication::quit(); }},
                  launchReason(), log);
    QObject::connect(&application, &QGuiApplication::applicationStateChanged, &launch, [&](auto state) {
        if (state == Qt::ApplicationActive) launch.cameToFront();
    });
    const int status = QApplication::exec();
    if (window.mac()) window.mac()->endWithProgram();
    std::_Exit(status); // without waiting for what is only being read: a disk may never answer
}

/// The status to end with when the terminal's program asks about the login item, which only this one may do.
std::optional<int> answerTerminal(int count, char** words) {
    HostLog log(LogLevel::error);
    const auto item = applicationLoginItem(log);
    return item ? answerAboutLoginItem(*item, count, words) : std::nullopt;
}

} // namespace

int main(int count, char** words) {
    std::signal(SIGPIPE, SIG_IGN);
    crashRecorder::install(CrashReports::defaultFolder(), TIDWEN_VERSION);
    if (const auto answered = answerTerminal(count, words)) return *answered;
    QStringList asked;
    for (int i = 0; i < count; ++i)
        asked << QString::fromLocal8Bit(words[i]);
    if (const auto answer = answerBeforeLaunch(asked, spoken(findResources(words[0])), TIDWEN_VERSION))
        return print(*answer);
    QApplication application(count, words);
    QApplication::setApplicationName(QStringLiteral("Tidwen"));
    QApplication::setApplicationVersion(QStringLiteral(TIDWEN_VERSION));
    dress(systemAppearance());
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/tidwen.svg")));
    return run(application, words[0]);
}
