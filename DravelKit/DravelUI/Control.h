#pragma once

#include "DravelKit/DravelUI/Theme.h"

#include <QAbstractButton>
#include <QList>
#include <QPointer>
#include <QWidget>

class QMenu;
class QPainter;

namespace dravel {

// True for focus that came by the keyboard: Tab, Backtab or a shortcut. Pass Qt::TabFocusReason when you move focus for
// an arrow key.
bool isKeyboardFocus(Qt::FocusReason);

// Opens a menu; for whoever moves by keyboard (there is a focus ring) its first entry is chosen, and so spoken. Not
// QMenu::exec(): whoever pressed a button over the accessibility bus would wait for the menu to close.
void popUp(QMenu&, const QPoint& corner);

// The property of a widget that hands the focus on when it comes: screen readers don't hear of it.
inline constexpr char handsFocusOn[] = "dravel.handsFocusOn";

// Lets screen readers speak a notification that is shown already and says something else now; showing one speaks it.
void announce(QWidget& notification);

// The ring 2 px outside a control that has keyboard focus. It stands in the control's page, above its neighbours, and
// follows the control when that moves. At most one per window; gone with the focus.
class FocusRing final : public QWidget {
    Q_OBJECT

  public:
    // `face` in the control's coordinates; `radius` is the face's own.
    static FocusRing* around(QWidget& control, const QRect& face, int radius);
    bool eventFilter(QObject*, QEvent*) override;

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    FocusRing(QWidget& stage, QWidget& control, const QRect& face, int radius);
    void follow();

    QPointer<QWidget> control_;
    QRect face_;
    int radius_;
};

// Base of every painted button: hover, keyboard focus ring, 40 % opacity while disabled; Space and Return press it.
// Qt gives it role, state and press action on the accessibility bus; text() or accessibleName() is its name.
class Control : public QAbstractButton {
    Q_OBJECT

  public:
    explicit Control(QWidget* parent = nullptr);
    ~Control() override;
    bool hasRing() const { return ring_; }

  protected:
    virtual void paint(QPainter&) = 0;            // antialiasing is on
    virtual QRect face() const { return rect(); } // what the focus ring surrounds
    virtual int faceRadius() const { return Theme::Radius::sm; }
    bool isHovered() const { return isEnabled() && underMouse(); }

    void paintEvent(QPaintEvent*) final;
    void focusInEvent(QFocusEvent*) override;
    void focusOutEvent(QFocusEvent*) override;
    virtual void showRing(bool);
    void keyPressEvent(QKeyEvent*) override;

  private:
    QPointer<FocusRing> ring_;
};

}
