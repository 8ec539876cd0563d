#include "DravelKit/DravelUI/Control.h"

#include "DravelKit/DravelUI/Theme.h"

#include <QAbstractScrollArea>
#include <QAccessible>
#include <QApplication>
#include <QEvent>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QTimer>

#include <algorithm>

namespace dravel {

using namespace Qt::StringLiterals;
namespace {

constexpr int reach = 4; // 2 px of gap and 2 px of ring

// What scrolls along with the control: the body of the scroll area around it, else its window.
QWidget& stageOf(QWidget& control) {
    QWidget* stage = &control;
    while (QWidget* parent = stage->isWindow() ? nullptr : stage->parentWidget()) {
        if (auto* area = qobject_cast<QAbstractScrollArea*>(parent->parentWidget()); area && area->viewport() == parent)
            break;
        stage = parent;
    }
    return *stage;
}

}

bool isKeyboardFocus(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason || reason == Qt::ShortcutFocusReason;
}

void popUp(QMenu& menu, const QPoint& corner) {
    menu.popup(corner);
    const QPointer<Control> control = qobject_cast<Control*>(QApplication::focusWidget());
    if (!control || !control->hasRing()) return;
    // Both later: Qt tells of the window behind as if the focus had come to it, when a menu opens and when it closes.
    QTimer::singleShot(0, &menu, [&menu] {
        const auto entries = menu.actions();
        const auto first = std::find_if(entries.begin(), entries.end(), [](auto* entry) { return entry->isEnabled(); });
        if (first != entries.end() && !menu.activeAction()) menu.setActiveAction(*first);
    });
    QObject::connect(&menu, &QMenu::aboutToHide, control, [control] {
        QTimer::singleShot(0, control, [control] {
            if (!control->hasFocus()) return;
            QAccessibleEvent back(control, QAccessible::Focus);
            QAccessible::updateAccessibility(&back);
        });
    });
}

void announce(QWidget& notification) {
    QAccessibleEvent news(&notification, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&news);
}

FocusRing* FocusRing::around(QWidget& control, const QRect& face, int radius) {
    return new FocusRing(stageOf(control), control, face, radius);
}

FocusRing::FocusRing(QWidget& stage, QWidget& control, const QRect& face, int radius)
    : QWidget(&stage), control_(&control), face_(face), radius_(radius) {
    setObjectName(u"focusRing"_s);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    for (QWidget* one = &control; one && one != &stage; one = one->parentWidget()) one->installEventFilter(this);
    follow();
}

void FocusRing::follow() {
    if (!control_) return;
    const QPoint corner = control_->mapTo(parentWidget(), face_.topLeft());
    setGeometry(QRect(corner, face_.size()).adjusted(-reach, -reach, reach, reach));
    setVisible(control_->isVisibleTo(parentWidget()));
    raise();
}

bool FocusRing::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::ParentChange: follow(); break;
    default: break;
    }
    return false;
}

void FocusRing::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Theme::accent.on(*this), 2));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), radius_ + 3, radius_ + 3);
}

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

void Control::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (!event->isAutoRepeat()) click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

}
