#pragma once

#include "DravelKit/DravelUI/Control.h"
#include "DravelKit/DravelUI/Symbols.h"

#include <QVariantAnimation>

namespace dravel {

// A text button, 28 high.
class Button final : public Control {
    Q_OBJECT

  public:
    enum class Kind { neutral, neutralOnBackground, soft, prominent };

    Button(Kind, const QString& text, QWidget* parent = nullptr);
    void setKind(Kind);
    void setLarge(bool); // 40 high: the closing button of a welcome
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paint(QPainter&) override;

  private:
    Kind kind_;
    bool large_ = false;
};

// A button with a symbol only; give it an accessible name. The face (28x24 by default) stands in the middle of a
// larger hit area.
class IconButton : public Control {
    Q_OBJECT

  public:
    IconButton(Symbol, const QString& accessibleName, QWidget* parent = nullptr);
    void setSymbolSize(int);
    void setFaceSize(QSize);
    void setEmphasised(bool);           // its row is hovered: the symbol stands out more
    void setOpen(bool);                 // its menu is open
    void setShy(bool on) { shy_ = on; } // drawn only while it is emphasised, hovered or open
    QSize sizeHint() const override { return {32, 32}; }

  protected:
    void paint(QPainter&) override;
    QRect face() const override;

  private:
    Symbol symbol_;
    int symbolSize_ = 14;
    QSize faceSize_{28, 24};
    bool emphasised_ = false, open_ = false, shy_ = false;
};

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

// A switch with its label at the left; without text it is the bare switch, which then needs an accessible name.
// Checkable: use toggled() and setChecked().
class Switch final : public Control {
    Q_OBJECT

  public:
    enum class Kind { plain, danger };

    explicit Switch(const QString& label = {}, Kind = Kind::plain, QWidget* parent = nullptr);
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
