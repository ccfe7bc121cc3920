#pragma once

#include <QBoxLayout>

namespace tidwen {

/// A row that goes on in further lines where it does not fit into one. What may stretch, which is words,
/// stands above the others then.
class WrappingRow final : public QBoxLayout {
  public:
    explicit WrappingRow(QWidget* parent = nullptr);

    QSize minimumSize() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    int minimumHeightForWidth(int width) const override { return heightForWidth(width); }
    void setGeometry(const QRect& place) override;

  private:
    bool fits(int width) const;
    /// Places what does not fit into one line, unless it is only to be measured; gives the height.
    int arrange(const QRect& place, bool isMeasured) const;
    bool isWords(int index) const;
    /// Whether a line ends at the far side: something before its items pushes them there.
    bool isPushed() const;
};

} // namespace tidwen
