#pragma once

#include <QString>
#include <QWidget>
#include <string>

namespace tidwen {

/// The picture of one application.
class Tile final : public QWidget {
  public:
    explicit Tile(int size);
    void show(const QString& name, const std::string& bundleID);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString name_;
    std::string bundleID_;
};

} // namespace tidwen
