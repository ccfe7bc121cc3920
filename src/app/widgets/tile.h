#pragma once

#include "base/observable.h"
#include "base/path.h"

#include <QString>
#include <QWidget>
#include <string>

namespace tidwen {

class AppIcons;

/// The icon of one application, or what stands for it. Faint while it is disabled.
class Tile final : public QWidget {
  public:
    /// `icons` outlives it.
    Tile(int size, AppIcons& icons);
    void show(const QString& name, const std::string& bundleID, const Path& bundle);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    AppIcons& icons_;
    QString name_;
    std::string bundleID_;
    Path bundle_;
    Subscription following_;
};

} // namespace tidwen
