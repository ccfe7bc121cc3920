#pragma once

#include "base/message.h"
#include "base/path.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "scan/matching/trace.h"

#include <QWidget>
#include <functional>
#include <optional>
#include <string>

class QBoxLayout;

namespace tidwen {

/// All about one find: why it is here, how sure that is, and whether it can be brought back.
class FindDetails final : public QWidget {
  public:
    struct Actions {
        std::function<void(const Path&)> reveal; ///< shows an item in its folder
        /// How long an undo is possible, if not until the Trash is emptied; may be empty.
        std::function<std::optional<Message>()> retention = {};
        /// Shows the permissions that a find resets, one by one; may be empty.
        std::function<void(const Trace&)> showPermissions = {};
        /// Opens the pane of System Settings in which a step is done by hand; may be empty.
        std::function<void(SettingsPane)> openPane = {};
    };

    /// `tierNotes` begins the keys of what the tiers mean here.
    FindDetails(const Texts& texts, UserEnvironment user, Actions actions, std::string tierNotes);

    void show(const Trace* trace); ///< null: nothing is current
    static int paneWidth();        ///< for which they are designed, in pixels

  private:
    QString undoOf(const Trace& trace) const;
    QString sizeOf(const Trace& trace) const;
    void addMark(const Trace& trace);
    void addRisk(TraceRisk risk);
    void addLine(const char* key, const QString& text);
    void addLine(const char* key, QBoxLayout* value);
    void addMoves(const Trace& trace);
    void addPlaceButtons(const Path& path);

    const Texts& texts_;
    UserEnvironment user_;
    Actions actions_;
    std::string tierNotes_;
    QBoxLayout* content_;
};

} // namespace tidwen
