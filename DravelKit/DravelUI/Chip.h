#pragma once

#include "DravelKit/DravelUI/Control.h"

namespace dravel {

// A quick choice. Selected is its checked state, which only its owner sets: a click says clicked() and changes nothing.
class Chip final : public Control {
    Q_OBJECT

  public:
    explicit Chip(const QString& text, QWidget* parent = nullptr);
    void setSelected(bool on) { setChecked(on); }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paint(QPainter&) override;
    int faceRadius() const override { return 14; }
    void nextCheckState() override {}
};

}
