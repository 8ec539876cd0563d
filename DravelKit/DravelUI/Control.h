#pragma once

#include "DravelKit/DravelUI/FocusRing.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QAbstractButton>

class QPainter;

namespace dravel {

// Base of every painted button: hover, keyboard focus ring, 40 % opacity while disabled; Space and Return press it.
// Qt gives it role, state and press action on the accessibility bus; text() or accessibleName() is its name.
class Control : public QAbstractButton {
    Q_OBJECT

  public:
    explicit Control(QWidget* parent = nullptr);
    ~Control() override;

  protected:
    virtual void paint(QPainter&) = 0;            // antialiasing is on
    virtual QRect face() const { return rect(); } // what the focus ring surrounds
    virtual int faceRadius() const { return Theme::Radius::sm; }
    bool isHovered() const { return isEnabled() && underMouse(); }
    // Again after face() changed while the ring is shown.
    void refreshRing();

    void paintEvent(QPaintEvent*) final;
    void focusInEvent(QFocusEvent*) override;
    void focusOutEvent(QFocusEvent*) override;
    virtual void showRing(bool);
    void keyPressEvent(QKeyEvent*) override;

  private:
    QPointer<FocusRing> ring_;
};

}
