#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

namespace dravel {

// True for focus that came by the keyboard: Tab, Backtab or a shortcut. Pass Qt::TabFocusReason when you move focus for
// an arrow key.
bool isKeyboardFocus(Qt::FocusReason);

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

}
