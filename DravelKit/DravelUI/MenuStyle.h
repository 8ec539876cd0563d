#pragma once

#include <QRegion>
#include <QSize>

class QPainter;
class QStyleOptionMenuItem;
class QWidget;

// How menus and popups are drawn.
namespace dravel {

namespace menus {

inline constexpr int padding = 4, entryHeight = 28;

QSize entrySize(const QStyleOptionMenuItem&);
void paintEntry(QPainter&, const QStyleOptionMenuItem&, const QWidget* menu);
void paintBarEntry(QPainter&, const QStyleOptionMenuItem&);

// The property of an action that is drawn in the danger tones.
inline constexpr char destructive[] = "destructive";

}

// The rounded, bordered face of menus and popups. Where windows are blended with what is below them the corners are
// transparent; elsewhere they would be black, so there the window itself gets the shape.
namespace popups {

void prepare(QWidget& window); // before it is first shown
bool isShaped(const QWidget& window);
QRegion shape(const QRect&); // of a shaped one
void paint(QPainter&, const QWidget& window);

}

}
