#pragma once

#include <QString>
#include <QWidget>
#include <cstdint>
#include <vector>

namespace tidwen {

/// How much each kind of find takes of the whole: a coloured bar, and its words below.
class SizeBar final : public QWidget {
  public:
    struct Part {
        QString title;
        QString size;
        std::int64_t bytes = 0;
    };

    SizeBar();
    void show(std::vector<Part> parts);
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::vector<Part> parts_;
};

} // namespace tidwen
