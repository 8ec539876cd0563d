#pragma once

#include "DravelKit/DravelUI/Control.h"

#include <QVariantAnimation>

namespace dravel {

// A switch with its label at the left; without text it is the bare switch, which then needs an accessible name.
// Checkable: use toggled() and setChecked().
class Switch final : public Control {
    Q_OBJECT

  public:
    enum class Kind { Plain, Danger };

    explicit Switch(const QString& label = {}, Kind = Kind::Plain, QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paint(QPainter&) override;
    QRect face() const override;
    int faceRadius() const override { return 10; }
    bool hitButton(const QPoint& point) const override { return rect().contains(point); }

  private:
    void slide(bool on);

    Kind kind_;
    qreal knob_ = 0; // 0 off … 1 on
    QVariantAnimation animation_;
};

}
