#pragma once

#include "app/widgets/panel.h"
#include "base/path.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "scan/matching/trace.h"

#include <functional>
#include <string>

class QBoxLayout;
class QPushButton;

namespace tidwen {

/// All about one find: why it is here, how sure that is, and whether it can be brought back.
class DetailsPane final : public Panel {
  public:
    /// `reveal` shows an item in its folder; `tierNotes` begins the keys of what the tiers mean here.
    DetailsPane(const Texts& texts, UserEnvironment user, std::function<void(const Path&)> reveal,
                std::string tierNotes = "review.risk.");

    void show(const Trace* trace); ///< null: nothing is current
    /// When it stands beside the list: always, or only for a find.
    enum class Stands { always, forFind };
    /// Makes the button that opens the details over a window in which the pane has no room. From now on
    /// `fold` shows the one or the other.
    QPushButton* makeButton(Stands stands);
    /// The window may have another width.
    void fold();
    /// Shows the permissions that a find resets, one by one; may be empty.
    std::function<void(const Trace&)> onPermissions;
    /// Opens the pane of System Settings in which a step is done by hand; may be empty.
    std::function<void(SettingsPane)> onPane;

  private:
    void openSheet() const;
    QString sizeOf(const Trace& trace) const;
    void addRisk(TraceRisk risk);
    void addLine(const char* key, const QString& text);
    void addLine(const char* key, QBoxLayout* value);
    void addButtons(const Path& path);

    const Texts& texts_;
    UserEnvironment user_;
    std::function<void(const Path&)> reveal_;
    std::string tierNotes_;
    const Trace* shown_ = nullptr;
    QBoxLayout* content_;
    QPushButton* button_ = nullptr;
    Stands stands_ = Stands::always;
};

} // namespace tidwen
