#pragma once

#include <QIcon>
#include <QLabel>
#include <QRectF>

class QPainter;
class QColor;

namespace dravel {

// The maker's wordmark, drawn from path data in the text colour. Its accessible name is "Dravel".
class DravelLogo final : public QLabel {
    Q_OBJECT

  public:
    explicit DravelLogo(int height = 24, QWidget* parent = nullptr);
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent*) override;
};

// The application icon at any size: a square with a diagonal gradient and a white tick in a box.
QIcon tickIcon();
void paintTickIcon(QPainter&, const QRectF&);

// The tick in its open box alone, on a grid of 18 that fills the rectangle.
void paintTickGlyph(QPainter&, const QRectF&, const QColor&);

}
