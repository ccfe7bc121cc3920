#pragma once

#include "app/style/palette.h"

#include <QWidget>
#include <optional>

namespace tidwen {

/// A ground for other widgets: filled, and framed where `line` is given.
class Panel : public QWidget {
  public:
    struct Look {
        Role ground = Role::surface;
        std::optional<Role> line = Role::line;
        int radius = 11;
        Qt::Edges edges = {}; ///< with a radius of 0: where the line runs
    };

    explicit Panel(Look look, QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Look look_;
};

/// The bar at the lower edge of a screen, which holds what can be done.
Panel* footerPanel();

} // namespace tidwen
