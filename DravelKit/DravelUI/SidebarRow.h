#pragma once

#include "DravelKit/DravelUI/Control.h"
#include "DravelKit/DravelUI/Symbols.h"

namespace dravel {

// A row of a SidebarList: checked means selected.
class SidebarRow final : public Control {
    Q_OBJECT

  public:
    SidebarRow(Symbol, const QString& title, QWidget* parent);

  protected:
    void paint(QPainter&) override;
    void nextCheckState() override { setChecked(true); }
    void showRing(bool) override;
    void keyPressEvent(QKeyEvent*) override;

  private:
    Symbol symbol_;
    bool ringed_ = false;
};

}
