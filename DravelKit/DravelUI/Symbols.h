#pragma once

#include <QColor>
#include <QPixmap>
#include <QRectF>

class QPainter;

namespace dravel {

// The symbols that are compiled in, by the names of their files.
enum class Symbol {
    Sun,
    SunFill,
    ExclamationCircle,
    Calendar3,
    Calendar4,
    CheckCircle,
    CheckCircleFill,
    Gear,
    ArrowRepeat,
    ExclamationLg,
    ExclamationTriangleFill,
    CheckLg,
    Clock,
    HourglassSplit,
    Inbox,
    FileEarmarkText,
    FileEarmark,
    Files,
    ArrowLeftRight,
    BellFill,
    Bell,
    Send,
    PersonCircle,
    CalendarPlus,
    Compass,
    Power,
    Terminal,
    ThreeDots,
    PlusLg,
    ChevronLeft,
    ChevronRight,
    HandThumbsUpFill,
    Search,
    Keyboard
};

// A square pixmap of `size` logical pixels in one colour, kept per size, colour and device pixel ratio.
QPixmap symbolPixmap(Symbol, int size, const QColor&, qreal devicePixelRatio);

// Draws it in the middle of the rectangle, on whole device pixels.
void paintSymbol(QPainter&, const QRectF&, Symbol, int size, const QColor&);

}
