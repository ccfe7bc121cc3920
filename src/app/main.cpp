#include "app/shell/main_loop.h"
#include "app/shell/main_window.h"
#include "app/style/style.h"
#include "host/crash_recorder.h"
#include "host/crash_reports.h"
#include "program/resources.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QPalette>
#include <csignal>

namespace {

using namespace tidwen;

int run(QApplication& application, const char* program) {
    const auto resources = findResources(program);
    const auto texts = Texts::load(resources, spokenLanguage(resources, "system"));
    QCommandLineParser words;
    const QCommandLineOption volume(QStringLiteral("volume"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption home(QStringLiteral("home"), QString(), QStringLiteral("PATH"));
    const QCommandLineOption sample(QStringLiteral("sample"));
    words.addOptions({volume, home, sample});
    words.process(application);

    StandardErrorLog log(LogLevel::error);
    MainLoop main;
    HostServices host({programFile(program).string()}, log);
    WorkQueue background;
    MacOpener opener(host, texts, log, main, background);
    MainWindow window({opener, texts, main, background});
    const auto homeOfUser = words.isSet(home) ? std::optional(words.value(home).toStdString()) : std::nullopt;
    if (words.isSet(volume))
        window.open(words.value(volume).toStdString(), homeOfUser);
    else if (words.isSet(sample))
        window.openSample();
    window.show();
    return QApplication::exec();
}

} // namespace

int main(int count, char** words) {
    std::signal(SIGPIPE, SIG_IGN);
    crashRecorder::install(CrashReports::defaultFolder(), TIDWEN_VERSION);
    QApplication application(count, words);
    QApplication::setApplicationName(QStringLiteral("Tidwen"));
    QApplication::setApplicationVersion(QStringLiteral(TIDWEN_VERSION));
    const bool isDark = QApplication::palette().color(QPalette::Window).lightness() < 128; // the system's
    dress(isDark ? Appearance::dark : Appearance::light);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/tidwen.svg")));
    return run(application, words[0]);
}
