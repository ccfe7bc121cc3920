#pragma once

#include "app/style/palette.h"

#include <QIcon>
#include <QProxyStyle>

class QPushButton;

namespace tidwen {

/// How every control looks: the toolkit's portable style with our shapes and colours. Belongs to the
/// application, which has no other.
class Style : public QProxyStyle {
  public:
    explicit Style(Appearance appearance);

    const Colors& colors() const { return colors_; }

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override;
    QIcon standardIcon(StandardPixmap which, const QStyleOption* option,
                       const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override;

  private:
    void drawPanel(const QStyleOption& option, QPainter& painter, bool isPrimary, bool isFocused) const;
    void drawCheckBox(const QStyleOption& option, QPainter& painter) const;

    Colors colors_;
};

/// A button is the main one of what it stands on. The toolkit's own mark, "default", goes to whichever button
/// has the focus.
void makePrimary(QPushButton& button);
bool isPrimary(const QWidget* button);

/// Of the application's style; light ones while it has another.
const Colors& colors();

/// Gives the application its font, palette and style; `textScale` 1 is the designed size.
void dress(Appearance appearance, double textScale = 1);

/// Changes the palette and the style alone.
void wear(Appearance appearance);

/// A filled, rounded rectangle.
void fillRounded(QPainter& painter, const QRectF& place, const QColor& color, double radius);

} // namespace tidwen
