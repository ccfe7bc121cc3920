#pragma once

#include "app/models/own_services.h"
#include "app/models/spoken_language.h"
#include "app/shell/mac_opener.h"
#include "app/shell/main_loop.h"
#include "app/shell/main_window.h"
#include "base/executor.h"
#include "base/log.h"
#include "base/texts.h"
#include "program/host_services.h"
#include "removal/removal_flow_model.h"
#include "support/temporary_folder.h"

#include <QAbstractItemView>
#include <QPushButton>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tidwen::test {

/// Runs the event loop until `done`, sleeping between events. False after half a minute.
bool waitUntil(const std::function<bool()>& done);

/// Lets as much time pass as Return needs between two questions.
void pause();

/// What a screen reader would meet in a window without a name.
std::vector<std::string> nameless(QWidget& window);
/// What a screen reader says of a row.
QString spoken(const QModelIndex& row);

/// A window over a sample volume of its own, with the settings of nobody.
class WindowFixture {
  public:
    /// `resources`: the folder with the texts.
    explicit WindowFixture(const std::filesystem::path& resources = TIDWEN_RESOURCES);

    /// Opens the volume; true once every application is measured.
    bool openSample();
    /// True once every application of the Mac that is being opened is measured.
    bool isReady();
    /// Makes the window the one that keys go to.
    bool hasFocus();
    /// Looks for what belongs to an application, as its Return key does; true once the review stands.
    bool review(const std::string& name);
    /// Goes to the leftovers and looks for them; true once they are shown.
    bool sweep();
    /// From the find that resets the permissions of the application under review.
    bool openPermissionsOfTheReview();
    /// The screen's primary button, and then the sheet's; true once the report stands.
    bool removeWhatIsChosen();

    RemovalFlowModel& flow() { return window.mac()->flow(); }
    template<class Widget>
    Widget* find(const char* name) {
        return window.findChild<Widget*>(QString::fromLatin1(name));
    }
    /// Chooses a language in the settings; the window speaks it then.
    void speak(const std::string& language);
    /// Clicks the button of this name that is shown, as a hand does; false when none can be clicked.
    bool click(const char* name);
    /// Whether these words stand in the window.
    bool says(const QString& words);
    /// Drags files and folders of the volume over the window and lets them go; false when no veil answers.
    bool drop(const std::vector<std::string>& names);
    /// A file or folder of the volume.
    std::filesystem::path at(const std::string& place) const { return folder.path() / "Sample" / place; }
    /// The row of a view that shows these words, however deep; none when there is none.
    static QModelIndex rowCalled(const QAbstractItemView& view, const QString& words);

    TemporaryFolder folder;
    Texts texts;
    StandardErrorLog log{LogLevel::error};
    MainLoop main;
    HostServices host;
    SeparateThreads background;
    MacOpener opener;
    OwnServices own;
    SpokenLanguage language;
    MainWindow window;
};

} // namespace tidwen::test
