#pragma once

#include "DravelKit/DravelUI/Theme.h"

#include <QString>
#include <QTextLayout>

#include <memory>
#include <optional>

class QColor;
class QPainter;
class QRectF;

// Text of one style in line boxes of the style's height. Plain text always: markup is shown as it stands.
namespace dravel {

int textWidth(const Theme::TextStyle&,
              const QString&); // to the nearest pixel; paintLine() does not elide what fits by it

// One line, vertically centred in the rectangle, elided when it is too long.
void paintLine(QPainter&, const QRectF&, const Theme::TextStyle&, const QColor&, const QString&,
               Qt::Alignment horizontal = Qt::AlignLeft, Qt::TextElideMode = Qt::ElideRight);

// The same text, as long, with no line break where French has none: inside « », before « : ; ! ? » and in « 9 h ».
QString typeset(QString);

// Text wrapped to a width, laid out once and painted often.
class Paragraph {
  public:
    Paragraph(const QString& text, const Theme::TextStyle&, int width, Qt::Alignment horizontal = Qt::AlignLeft);

    int width() const { return width_; }
    int height() const; // a whole number of line boxes, at least one
    void paint(QPainter&, QPointF topLeft, const QColor&, const QList<QTextLayout::FormatRange>& = {}) const;
    int positionAt(QPointF) const; // of the character nearest to a point inside

  private:
    std::unique_ptr<QTextLayout> layout_;
    int width_, line_;
};

}
