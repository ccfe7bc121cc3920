#pragma once

#include <QRect>
#include <QRegion>
#include <QString>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <vector>

namespace tidwen {

/// How much each kind of find takes of the whole: a coloured bar, and its words below.
class SizeBar final : public QWidget {
  public:
    struct Part {
        QString title;
        QString size;
        std::int64_t bytes = 0;
        std::function<void()> pick = {}; ///< for a click on it; none: it cannot be picked
        bool isFaint = false;            ///< another one is picked
    };

    SizeBar();
    void show(std::vector<Part> parts);
    QSize sizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    /// Where the words of each part stand: on as many lines as they need.
    std::vector<QRect> wordPlaces(int width) const;
    void paintWords(QPainter& painter, const Part& part, const QColor& color, const QRect& place) const;

    std::vector<Part> parts_;
    std::vector<QRegion> places_; ///< of the parts, as they were painted
};

} // namespace tidwen
