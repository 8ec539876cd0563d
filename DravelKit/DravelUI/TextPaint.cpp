#include "DravelKit/DravelUI/TextPaint.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace dravel {
namespace {

// Where the baseline stands in a line box: what the type leaves free is shared above and below. The display type has
// much room for accents above its capitals and is lifted to the optical middle.
qreal baseline(const Theme::TextStyle& style) {
    const QFontMetricsF metrics(Theme::font(style));
    const qreal ascent = std::round(metrics.ascent()), descent = std::round(metrics.descent());
    return std::floor((style.line - ascent - descent) / 2) + ascent - (style.display ? 1 : 0);
}

}

int textWidth(const Theme::TextStyle& style, const QString& text) {
    return qRound(QFontMetricsF(Theme::font(style)).horizontalAdvance(text));
}

void paintLine(QPainter& painter, const QRectF& rect, const Theme::TextStyle& style, const QColor& colour,
               const QString& text, Qt::Alignment horizontal, Qt::TextElideMode elide) {
    const QFont& font = Theme::font(style);
    const QFontMetricsF metrics(font);
    qreal width = metrics.horizontalAdvance(text);
    QString shown = text;
    if (width > rect.width() + 0.99) {
        shown = metrics.elidedText(text, elide, rect.width());
        width = metrics.horizontalAdvance(shown);
    }
    const qreal room = rect.width() - width;
    const qreal shift = horizontal.testFlag(Qt::AlignRight)     ? room
                        : horizontal.testFlag(Qt::AlignHCenter) ? room / 2
                                                                : 0;
    const qreal top = rect.top() + (rect.height() - style.line) / 2;
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(QPointF(rect.left() + shift, std::floor(top) + baseline(style)), shown);
}

QString typeset(QString text) {
    const auto at = [&](qsizetype i) { return i >= 0 && i < text.size() ? text[i] : QChar(); };
    for (qsizetype i = 1; i + 1 < text.size(); ++i) {
        if (text[i] != u' ') continue;
        const QChar before = text[i - 1], after = text[i + 1];
        const bool hours = before.isDigit() && after == u'h' && !at(i + 2).isLetter();
        const bool minutes = before == u'h' && at(i - 2) == QChar::Nbsp && after.isDigit();
        if (before == u'«' || QStringView(u"»:;!?").contains(after) || hours || minutes) text[i] = QChar::Nbsp;
    }
    return text;
}

Paragraph::Paragraph(const QString& text, const Theme::TextStyle& style, int width, Qt::Alignment horizontal)
    : width_(width), line_(style.line) {
    QString plain = typeset(text);
    plain.replace(u'\n', QChar::LineSeparator);
    const QFont& font = Theme::font(style);
    layout_ = std::make_unique<QTextLayout>(plain, font);
    // Absolute: a title in a right-to-left script stays in the left column, like its neighbours.
    QTextOption option(horizontal | Qt::AlignAbsolute);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(plain.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    layout_->setTextOption(option);
    layout_->setCacheEnabled(true);

    const qreal base = baseline(style);
    layout_->beginLayout();
    for (QTextLine line = layout_->createLine(); line.isValid(); line = layout_->createLine()) {
        line.setLineWidth(std::max(width, 1));
        // An emoji's taller font must not push the line down.
        line.setPosition({0, line.lineNumber() * line_ + base - line.ascent()});
    }
    layout_->endLayout();
}

int Paragraph::height() const { return std::max(layout_->lineCount(), 1) * line_; }

void Paragraph::paint(QPainter& painter, QPointF topLeft, const QColor& colour,
                      const QList<QTextLayout::FormatRange>& selections) const {
    painter.setPen(colour);
    layout_->draw(&painter, topLeft, selections);
}

int Paragraph::positionAt(QPointF point) const {
    const int last = layout_->lineCount() - 1;
    if (last < 0) return 0;
    const int line = std::clamp(static_cast<int>(point.y()) / line_, 0, last);
    return layout_->lineAt(line).xToCursor(point.x());
}

}
