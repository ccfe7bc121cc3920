#pragma once

#include <QObject>
#include <functional>
#include <string>
#include <vector>

namespace tidwen {

/// Files that the system hands to the program: dropped on its icon in the Dock, or opened with it. Watches
/// the application object's events while it lives.
class OpenedFiles final : public QObject {
  public:
    explicit OpenedFiles(std::function<void(std::vector<std::string> paths)> take);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::function<void(std::vector<std::string>)> take_;
};

} // namespace tidwen
