#include "DravelKit/DravelUI/Fields.h"

#include "DravelKit/DravelUI/DatePopup.h"
#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/DravelUI/Theme.h"
#include "DravelKit/DravelUI/Typography.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QtMath>

namespace dravel {
namespace {

constexpr int symbolLeft = 10, symbolSize = 12, textLeft = 30, height = 28;
constexpr auto& type = Theme::Typography::callout;

void prepare(QDateTimeEdit& field, const QString& format, const QString& accessibleName) {
    field.setDisplayFormat(format);
    field.setButtonSymbols(QAbstractSpinBox::NoButtons);
    field.setFrame(false);
    field.setFont(Theme::font(type));
    field.setAccessibleName(accessibleName);
    field.setWrapping(true);
    field.setCorrectionMode(QAbstractSpinBox::CorrectToNearestValue);
    QObject::connect(&field, &QDateTimeEdit::dateTimeChanged, &field, &QWidget::updateGeometry);
    field.setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void paintField(QWidget& field, Symbol symbol, bool focused) {
    QPainter painter(&field);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!field.isEnabled()) painter.setOpacity(0.4);
    const qreal inset = focused ? 1 : 0;
    painter.setPen(focused ? QPen(Theme::accent.on(field), 2) : QPen(Qt::NoPen));
    painter.setBrush(Theme::tile.on(field));
    painter.drawRoundedRect(QRectF(field.rect()).adjusted(inset, inset, -inset, -inset), Theme::Radius::sm - inset,
                            Theme::Radius::sm - inset);
    paintSymbol(painter, QRectF(symbolLeft, 0, symbolSize, field.height()), symbol, symbolSize,
                Theme::textTertiary.on(field));
}

QSize sizeFor(const QString& text) {
    return {textLeft + qCeil(QFontMetricsF(Theme::font(type)).horizontalAdvance(text)) + 10, height};
}

}

DateField::DateField(const QString& accessibleName, QWidget* parent) : QDateEdit(parent) {
    prepare(*this, QStringLiteral("dd/MM/yyyy"), accessibleName);
}

DateField::~DateField() { delete popup_; }

QSize DateField::sizeHint() const { return sizeFor(text()); }

DatePopup* DateField::popup() const { return popup_ && popup_->isVisible() ? popup_.get() : nullptr; }

void DateField::openPopup() {
    if (popup()) return;
    popup_ = new DatePopup(date(), today_.isValid() ? today_ : QDate::currentDate(), this);
    connect(popup_, &DatePopup::picked, this, &QDateEdit::setDate);
    popup_->showUnder(*this);
}

void DateField::paintEvent(QPaintEvent*) { paintField(*this, Symbol::Calendar4, hasFocus()); }

void DateField::keyPressEvent(QKeyEvent* event) {
    const bool down = event->key() == Qt::Key_Down && event->modifiers().testFlag(Qt::AltModifier);
    if (down || event->key() == Qt::Key_F4) return openPopup();
    QDateEdit::keyPressEvent(event);
}

void DateField::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) return openPopup(); // the digits lie in the line edit, which has its own
    QDateEdit::mousePressEvent(event);
}

TimeField::TimeField(const QString& accessibleName, QWidget* parent) : QTimeEdit(parent) {
    prepare(*this, QStringLiteral("HH:mm"), accessibleName);
}

QSize TimeField::sizeHint() const { return sizeFor(text()); }

void TimeField::paintEvent(QPaintEvent*) { paintField(*this, Symbol::Clock, hasFocus()); }

}
