#pragma once

#include <QSize>

class QPainter;
class QStyleOptionMenuItem;
class QWidget;

// How KitStyle draws menus.
namespace dravel::menus {

inline constexpr int padding = 4, entryHeight = 28;

QSize entrySize(const QStyleOptionMenuItem&);
void paintEntry(QPainter&, const QStyleOptionMenuItem&, const QWidget* menu);
void paintBarEntry(QPainter&, const QStyleOptionMenuItem&);

// The property of an action that is drawn in the danger tones.
inline constexpr char destructive[] = "destructive";

}
