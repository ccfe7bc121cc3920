#pragma once

#include "app/style/palette.h"
#include "base/observable.h"

#include <QObject>
#include <functional>
#include <string>

namespace tidwen {

/// What the desktop shows its own windows in.
Appearance systemAppearance();

/// Gives the application the appearance that the user chose ("light", "dark"; anything else is the
/// desktop's), now and at each change of the choice or the desktop.
class AppearanceFollower final : public QObject {
  public:
    using Asks = std::function<Appearance()>;

    /// `choice` outlives it.
    explicit AppearanceFollower(Property<std::string>& choice, Asks desktop = systemAppearance);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void apply();

    const Property<std::string>& choice_;
    Asks desktop_;
    Subscription following_;
    bool isApplying_ = false;
};

} // namespace tidwen
