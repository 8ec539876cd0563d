#pragma once

#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QLabel>

#include <optional>

namespace dravel {

// What a tag looks like: plain (no fill), or strong in a soft fill of its own.
struct TagLook {
    Theme::Tone text, icon;
    std::optional<Theme::Tone> fill;

    static TagLook plain();
    static TagLook danger();
    static TagLook warning();
    static TagLook success();
};

// A symbol and a short text, 18 high. For painted rows the two functions below draw the same without a widget.
class StatusTag final : public QLabel {
    Q_OBJECT

  public:
    StatusTag(Symbol, const QString& text, const TagLook&, QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    Symbol symbol_;
    TagLook look_;
};

QSize tagSize(const TagLook&, const QString& text);
void paintTag(QPainter&, QPointF topLeft, Appearance, Symbol, const QString& text, const TagLook&);

// A number in a small capsule, 20 high and at least 24 wide.
class CountCapsule final : public QLabel {
    Q_OBJECT

  public:
    explicit CountCapsule(int count = 0, QWidget* parent = nullptr);
    void setCount(int);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent*) override;
};

}
