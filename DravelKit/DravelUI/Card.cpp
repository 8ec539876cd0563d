#include "DravelKit/DravelUI/Card.h"

#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "DravelKit/DravelUI/TextPaint.h"

#include <QLinearGradient>
#include <QMoveEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <cmath>

namespace dravel {

using namespace Qt::StringLiterals;
namespace {

// Painters lose precision in faces of a hundred thousand pixels, as a long list makes them: what lies far outside the
// exposed part is left out.
QRectF nearby(const QRectF& face, const QRect& exposed) {
    constexpr int far = 200;
    return face.intersected(QRectF(exposed).adjusted(-far, -far, far, far));
}

struct ShadowLayer {
    int grown, down;
    qreal alpha;
};
constexpr std::array shadow{ShadowLayer{3, 3, .006}, ShadowLayer{2, 2, .010}, ShadowLayer{1, 1, .018},
                            ShadowLayer{0, 1, .030}};

// A number in a small capsule, 20 high and at least 24 wide.
class CountCapsule final : public QLabel {
  public:
    explicit CountCapsule(QWidget* parent) : QLabel(parent) {}
    QSize sizeHint() const override {
        return {std::max(24, textWidth(Theme::Typography::captionStrong, text()) + 16), 20};
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Theme::tile.on(*this));
        painter.drawRoundedRect(rect(), 10, 10);
        paintLine(painter, rect(), Theme::Typography::captionStrong, Theme::textSecondary.on(*this), text(),
                  Qt::AlignHCenter);
    }
};

}

void paintShadow(QPainter& painter, const QRectF& face, int radius) {
    painter.setPen(Qt::NoPen);
    QColor colour = Theme::Palette::blackText.color();
    for (const auto& [grown, down, alpha] : shadow) {
        colour.setAlphaF(static_cast<float>(alpha));
        painter.setBrush(colour);
        painter.drawRoundedRect(face.adjusted(-grown, down - grown, grown, down + grown), radius + grown,
                                radius + grown);
    }
}

void paintSeparator(QPainter& painter, int left, int right, const QColor& colour) {
    const qreal ratio = painter.device()->devicePixelRatioF();
    const qreal top = painter.deviceTransform().map(QPointF()).y();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(QRectF(left, (std::round(top) - top) / ratio, right - left, std::floor(ratio) / ratio), colour);
    painter.setRenderHint(QPainter::Antialiasing);
}

Card::Card(QWidget* parent, Kind kind) : QWidget(parent), kind_(kind) {}

int Card::radius() const { return kind_ == Kind::hero ? Theme::Radius::lg : Theme::Radius::md; }

void Card::setHighlighted(bool on) {
    if (std::exchange(highlighted_, on) != on) update();
}

void Card::paintShadow(QPainter& painter, const QRect& exposed) const {
    dravel::paintShadow(painter, nearby(geometry(), exposed), radius());
}

// Qt paints anew what the card itself covered and covers, not what its shadow did.
void Card::updateShadow() {
    const auto before = std::exchange(shadowed_, isVisible() ? geometry() : QRect());
    if (parentWidget() == nullptr) return;
    for (const auto& at : {before, shadowed_}) parentWidget()->update(at.adjusted(-3, 0, 3, 6));
}

void Card::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    updateShadow();
}

void Card::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    updateShadow();
}

void Card::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool dark = appearanceOf(*this) == Appearance::dark;
    const bool bordered = highlighted_ || dark; // the light border has the colour of the surface
    const qreal pen = !bordered ? 0 : highlighted_ ? 2 : 1;
    painter.setPen(bordered ? QPen((highlighted_ ? Theme::accent : Theme::cardBorder).on(*this), pen)
                            : QPen(Qt::NoPen));
    painter.setBrush(Theme::surface.on(*this));
    if (kind_ == Kind::hero) {
        QLinearGradient sweep(0, 0, width(), 0);
        sweep.setColorAt(0.35, Theme::surface.on(*this));
        sweep.setColorAt(1, Theme::accentSoft.on(*this));
        painter.setBrush(sweep);
    }
    const QRectF face = QRectF(rect()).adjusted(pen / 2, pen / 2, -pen / 2, -pen / 2);
    painter.drawRoundedRect(nearby(face, event->rect()), radius() - pen / 2, radius() - pen / 2);
}

CardStage::CardStage(QWidget* parent) : QWidget(parent) {
    setAutoFillBackground(true); // opaque, so that scrolling moves pixels instead of painting them again
}

void CardStage::paintEvent(QPaintEvent* event) {
    if (appearanceOf(*this) == Appearance::dark) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const QObject* child : children()) {
        const auto* card = qobject_cast<const Card*>(child);
        if (card && card->isVisible() && card->geometry().adjusted(-3, 0, 3, 6).intersects(event->rect()))
            card->paintShadow(painter, event->rect());
    }
}

CardHeader::CardHeader(Symbol symbol, const Theme::Tone& tint, const QString& title, QWidget* parent)
    : QWidget(parent), symbol_(symbol), tint_(tint),
      title_(new TextLabel(Theme::Typography::cardTitle, Theme::text, title, this)) {
    title_->setObjectName(u"cardTitle"_s);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void CardHeader::setTitle(const QString& title) {
    if (title_->text() != title) title_->setText(title);
}

void CardHeader::setSymbol(Symbol symbol, const Theme::Tone& tint) {
    if (symbol == symbol_ && tint == tint_) return;
    symbol_ = symbol;
    tint_ = tint;
    update();
}

void CardHeader::setCount(int count) {
    if (!count_) {
        count_ = new CountCapsule(this);
        count_->setObjectName(u"cardCount"_s);
        count_->show();
    }
    count_->setText(QString::number(count));
    arrange();
}

void CardHeader::setControl(QWidget* control) {
    control_ = control;
    control->setParent(this);
    arrange();
}

void CardHeader::arrange() {
    int right = width() - Card::iconColumn;
    if (count_) {
        const QSize size = count_->sizeHint();
        right -= size.width();
        count_->setGeometry({{right, 8}, size});
        right -= Theme::Space::sm;
    }
    if (control_) {
        const QSize size = control_->sizeHint();
        right -= size.width();
        control_->setGeometry({{right, 18 - size.height() / 2}, size});
        right -= Theme::Space::sm;
    }
    title_->setGeometry(Card::textColumn, 8, std::max(right - Card::textColumn, 0), 20);
}

void CardHeader::resizeEvent(QResizeEvent*) { arrange(); }

void CardHeader::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintSymbol(painter, QRectF(Card::iconColumn, 8, Card::iconWidth, 20), symbol_, 16, tint_.on(*this));
}

EmptyCard::EmptyCard(Symbol symbol, const QString& text, QWidget* parent) : Card(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(Theme::Space::lg, 56, Theme::Space::lg, 56);
    column->setSpacing(Theme::Space::md);
    auto* disc = new Disc({.diameter = 64, .symbol = symbol, .symbolSize = 28, .ink = Theme::accent}, this);
    auto* label = new TextLabel(Theme::Typography::body, Theme::textSecondary, text, this);
    label->setObjectName(u"emptyText"_s);
    label->setAlignment(Qt::AlignHCenter);
    label->setWraps(true);
    column->addWidget(disc, 0, Qt::AlignHCenter);
    column->addWidget(label);
}

}
