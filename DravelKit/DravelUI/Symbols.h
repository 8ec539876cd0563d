#pragma once

#include <QColor>
#include <QPixmap>
#include <QRectF>

class QPainter;

namespace dravel {

// The symbols that are compiled in, by the names of their files.
enum class Symbol {
    sun,
    sunFill,
    exclamationCircle,
    calendar3,
    calendar4,
    checkCircle,
    checkCircleFill,
    gear,
    arrowRepeat,
    exclamationLg,
    exclamationTriangleFill,
    checkLg,
    clock,
    hourglassSplit,
    inbox,
    fileEarmarkText,
    fileEarmark,
    files,
    arrowLeftRight,
    bellFill,
    bell,
    send,
    personCircle,
    calendarPlus,
    compass,
    power,
    terminal,
    threeDots,
    plusLg,
    chevronLeft,
    chevronRight,
    handThumbsUpFill,
    search,
    keyboard
};

// A square pixmap of `size` logical pixels in one colour, kept per size, colour and device pixel ratio.
QPixmap symbolPixmap(Symbol, int size, const QColor&, qreal devicePixelRatio);

// Draws it in the middle of the rectangle, on whole device pixels.
void paintSymbol(QPainter&, const QRectF&, Symbol, int size, const QColor&);

}
