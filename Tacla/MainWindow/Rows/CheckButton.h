#pragma once

#include "DravelKit/DravelUI/Control.h"

namespace tacla {

// The circle before a task. A click says clicked(); whether the task is done is the task file's to say.
class CheckButton final : public dravel::Control {
    Q_OBJECT

  public:
    explicit CheckButton(QWidget* parent = nullptr);

    void setTask(const QString& title, bool done, bool strong);
    void setRowHighlighted(bool);
    QSize sizeHint() const override { return {32, 32}; }

  protected:
    void paint(QPainter&) override;
    QRect face() const override { return {6, 6, 20, 20}; }
    int faceRadius() const override { return 10; }
    void nextCheckState() override {}

  private:
    struct Look;
    Look look() const;

    bool strong_ = false, rowHighlighted_ = false;
};

}
