#pragma once

#include <QObject>
#include <functional>
#include <string>
#include <vector>

namespace tidwen {

/// Files that the system hands to the program: dropped on its icon in the Dock, or opened with it. Watches
/// the application object's events while it lives. They come one by one, and are passed on together.
class OpenedFiles final : public QObject {
  public:
    explicit OpenedFiles(std::function<void(std::vector<std::string> paths)> take);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void deliver();

    std::vector<std::string> gathered_;
    std::function<void(std::vector<std::string>)> take_;
};

} // namespace tidwen
