#include "app/models/own_services.h"
#include "app/models/spoken_language.h"
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

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <csignal>
#include <cstdlib>
#include <optional>
#ifdef __APPLE__
#include "macos/launch_reason.h"
#endif

namespace {

using namespace tidwen;

/// At a login only the Trash watch is wanted.
void showAfterLaunch(MainWindow& window, [[maybe_unused]] Log& log) {
#ifdef __APPLE__
    whenLaunched([&](bool isLogin) {
        if (isLogin)
            log.info("Login launch: watching the Trash without a window");
        else
            window.show();
    });
#else
    window.show();
#endif
}

int run(QApplication& application, const char* program) {
    const auto resources = findResources(program);
    auto texts = Texts::load(resources, "en");
    QCommandLineParser words;
    const QCommandLineOption volume(QStringLiteral("volume"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption home(QStringLiteral("home"), QString(), QStringLiteral("PATH"));
    const QCommandLineOption sample(QStringLiteral("sample"));
    words.addOptions({volume, home, sample});
    words.process(application);

    HostLog log(LogLevel::error);
    MainLoop main;
    HostServices host({programFile(program).string()}, log);
    WorkQueue background;
    MacOpener opener(host, texts, log, main, background);
    OwnServices own(host, log, main, {TIDWEN_VERSION, TIDWEN_FEED_KEY, TIDWEN_FEED_ADDRESS},
                    availableLanguages(resources));
    SpokenLanguage language(texts, resources, own.settings().preferences().language);
    MainWindow window({opener, language, main, background, own, findOwnBundle(program)});
    const OpenedFiles opened([&](auto paths) { window.takeFiles(std::move(paths)); });
    const auto homeOfUser = words.isSet(home) ? std::optional(words.value(home).toStdString()) : std::nullopt;
    if (words.isSet(volume))
        window.open(words.value(volume).toStdString(), homeOfUser);
    else if (words.isSet(sample))
        window.openSample();
    else if (const auto running = thisMac())
        window.openRunning(running);
    QObject::connect(&application, &QGuiApplication::applicationStateChanged, &window, [&](auto state) {
        if (state == Qt::ApplicationActive) window.comeBack();
    });
    showAfterLaunch(window, log);
    const int status = QApplication::exec();
    // What is being moved is waited for, but not what is only being read: a disk may never answer.
    if (!window.mac() || !window.mac()->isBusy()) std::_Exit(status);
    return status;
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
    QApplication application(count, words);
    QApplication::setApplicationName(QStringLiteral("Tidwen"));
    QApplication::setApplicationVersion(QStringLiteral(TIDWEN_VERSION));
    dress(systemAppearance());
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/tidwen.svg")));
    return run(application, words[0]);
}
