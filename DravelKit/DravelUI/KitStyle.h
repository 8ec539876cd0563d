#pragma once

#include <QProxyStyle>

namespace dravel {

// The style of every widget that Qt draws itself: line edits, scroll bars and menus in the look of the kit, the rest as
// Fusion in the kit's palette.
class KitStyle final : public QProxyStyle {
    Q_OBJECT

  public:
    KitStyle();

    using QProxyStyle::polish;
    void polish(QWidget*) override;
    int pixelMetric(PixelMetric, const QStyleOption*, const QWidget*) const override;
    int styleHint(StyleHint, const QStyleOption*, const QWidget*, QStyleHintReturn*) const override;
    QSize sizeFromContents(ContentsType, const QStyleOption*, const QSize&, const QWidget*) const override;
    QRect subControlRect(ComplexControl, const QStyleOptionComplex*, SubControl, const QWidget*) const override;
    void drawPrimitive(PrimitiveElement, const QStyleOption*, QPainter*, const QWidget*) const override;
    void drawControl(ControlElement, const QStyleOption*, QPainter*, const QWidget*) const override;
    void drawComplexControl(ComplexControl, const QStyleOptionComplex*, QPainter*, const QWidget*) const override;
};

}
