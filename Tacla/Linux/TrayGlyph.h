#pragma once

#include <QColor>
#include <QImage>

#include <cstddef>

namespace tacla {

// The tray icon's picture at that many pixels: a ticked box when nothing is open, else a box with the number.
QImage trayGlyph(int pixels, std::size_t open, const QColor&);

}
