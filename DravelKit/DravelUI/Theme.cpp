#include "DravelKit/DravelUI/Theme.h"

#include <QPalette>
#include <QWidget>

namespace dravel {

Appearance appearanceOf(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128 ? Appearance::Dark : Appearance::Light;
}

Appearance appearanceOf(const QWidget& widget) { return appearanceOf(widget.palette()); }

QColor Theme::Tone::on(const QWidget& widget) const { return in(appearanceOf(widget)).color(); }

}
