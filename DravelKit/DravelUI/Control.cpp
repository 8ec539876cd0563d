#include "DravelKit/DravelUI/Control.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>

namespace dravel {

Control::Control(QWidget* parent) : QAbstractButton(parent) {
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::TabFocus); // a click leaves the focus where the user types
}

Control::~Control() { delete ring_; }

void Control::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (isEnabled()) {
        painter.setRenderHint(QPainter::Antialiasing);
        paint(painter);
        return;
    }
    // Faded as a whole: shapes that lie on each other must not shine through.
    const qreal ratio = painter.deviceTransform().m11();
    QPixmap layer((QSizeF(size()) * ratio).toSize());
    layer.setDevicePixelRatio(ratio);
    layer.fill(Qt::transparent);
    {
        QPainter faded(&layer);
        faded.setRenderHint(QPainter::Antialiasing);
        paint(faded);
    }
    painter.setOpacity(0.4);
    painter.drawPixmap(0, 0, layer);
}

void Control::focusInEvent(QFocusEvent* event) {
    QAbstractButton::focusInEvent(event);
    if (isKeyboardFocus(event->reason())) showRing(true);
}

void Control::focusOutEvent(QFocusEvent* event) {
    QAbstractButton::focusOutEvent(event);
    // The ring is still there when the window, or a menu that was opened, gives the focus back.
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason) showRing(false);
}

void Control::showRing(bool on) {
    if (!on)
        delete ring_;
    else if (!ring_)
        ring_ = FocusRing::around(*this, face(), faceRadius());
}

void Control::refreshRing() {
    if (!ring_) return;
    delete ring_;
    ring_ = FocusRing::around(*this, face(), faceRadius());
}

void Control::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (!event->isAutoRepeat()) click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

}
