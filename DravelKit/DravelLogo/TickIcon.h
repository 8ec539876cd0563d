#pragma once

#include <QIcon>
#include <QRectF>

class QColor;
class QPainter;

namespace dravel {

// The application icon at any size: a square with a diagonal gradient and a white tick in a box.
QIcon tickIcon();
void paintTickIcon(QPainter&, const QRectF&);

// The tick in its open box alone, on a grid of 18 that fills the rectangle.
void paintTickGlyph(QPainter&, const QRectF&, const QColor&);

}
