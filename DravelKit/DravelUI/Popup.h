#pragma once

#include <QRegion>

class QPainter;
class QWidget;

// The rounded, bordered face of menus and popups. Where windows are blended with what is below them the corners are
// transparent; elsewhere they would be black, so there the window itself gets the shape.
namespace dravel::popups {

void prepare(QWidget& window); // before it is first shown
bool isShaped(const QWidget& window);
QRegion shape(const QRect&); // of a shaped one
void paint(QPainter&, const QWidget& window);

}
