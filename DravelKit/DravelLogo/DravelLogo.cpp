#include "DravelKit/DravelLogo/DravelLogo.h"

#include "DravelKit/DravelUI/Theme.h"

#include <QPainter>
#include <QSvgRenderer>

namespace dravel {

using namespace Qt::StringLiterals;
namespace {

// Six letters of one stroke each, with round ends, on a line 48 high: base at 38, top of the small letters at 16.
constexpr QSize drawing{190, 48};
constexpr char wordmark[] = R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 190 48">
<g fill="none" stroke="%1" stroke-width="5.5" stroke-linecap="round" stroke-linejoin="round">
<path d="M8 6 V38 H18 C30 38 36 31 36 22 C36 13 30 6 18 6 Z"/>
<path d="M49 38 V16 M49 25 C50 19 55 15.5 62 16.5"/>
<path d="M90 27 C90 33.5 85.5 38 79.5 38 C73.500 38 69 33.5 69 27 C69 20.5 73.5 16 79.5 16 C85.5 16 90 20.5 90 27 Z M90 16 V38"/>
<path d="M101 16 L111 38 L121 16"/>
<path d="M130.500 27 H151 C151 20.500 146.500 16 140.500 16 C134.500 16 130 20.500 130 27 C130 33.500 134.500 38 141 38 C145 38 148 36.500 150 34"/>
<path d="M163 4 V32 C163 36 165 38 169 38"/>
</g>
<circle cx="181" cy="37" r="4" fill="%2"/>
</svg>)";

}

DravelLogo::DravelLogo(int height, QWidget* parent) : QLabel(parent) {
    setText(u"Dravel"_s); // its name for screen readers
    setObjectName(u"dravelLogo"_s);
    setFixedSize(height * drawing.width() / drawing.height(), height);
}

QSize DravelLogo::sizeHint() const { return minimumSize(); }

void DravelLogo::paintEvent(QPaintEvent*) {
    const QString svg = QString::fromLatin1(wordmark).arg(Theme::text.on(*this).name(), Theme::accent.on(*this).name());
    QSvgRenderer renderer(svg.toLatin1());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, rect());
}

}
