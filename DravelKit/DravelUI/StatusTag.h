#pragma once

#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QSize>

#include <optional>

class QPainter;
class QPointF;
class QString;

namespace dravel {

// What a tag looks like: plain (no fill), or strong in a soft fill of its own.
struct TagLook {
    Theme::Tone text, icon;
    std::optional<Theme::Tone> fill;

    static TagLook plain();
    static TagLook danger();
    static TagLook warning();
    static TagLook success();
};

// A symbol and a short text, 18 high.
QSize tagSize(const TagLook&, const QString& text);
void paintTag(QPainter&, QPointF topLeft, Appearance, Symbol, const QString& text, const TagLook&);

}
