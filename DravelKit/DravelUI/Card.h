#pragma once

#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QWidget>

class QLabel;

namespace dravel {

class TextLabel;

// The soft shadow of a face with rounded corners, for the light look. It reaches 3 beside the face and 6 below it.
void paintShadow(QPainter&, const QRectF& face, int radius);

// A line of whole device pixels at the top of what is painted: at a scale of 1.25 all lines look alike.
void paintSeparator(QPainter&, int left, int right, const QColor&);

// A surface with rounded corners. Its shadow (light only) falls on the parent, which must be a CardStage: the column of
// a page and the body of a welcome are. Inside, the left grid: a column of 20 at x 16, text from x 48.
class Card : public QWidget {
    Q_OBJECT

  public:
    enum class Kind { plain, hero };
    static constexpr int iconColumn = 16, iconWidth = 20, textColumn = 48;

    explicit Card(QWidget* parent = nullptr, Kind = Kind::plain);
    void setHighlighted(bool); // 2 px accent border: its field has focus, or it takes a drop
    void paintShadow(QPainter&, const QRect& exposed) const; // in the parent's coordinates

  protected:
    void paintEvent(QPaintEvent*) override;
    void moveEvent(QMoveEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void showEvent(QShowEvent*) override { updateShadow(); }
    void hideEvent(QHideEvent*) override { updateShadow(); }

  private:
    void updateShadow();
    int radius() const;

    Kind kind_;
    QRect shadowed_; // where the card was when its shadow was painted last
    bool highlighted_ = false;
};

// Paints the page background and the shadows of the cards that are its children.
class CardStage : public QWidget {
    Q_OBJECT

  public:
    explicit CardStage(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent*) override;
};

// The head of a list or settings card, 36 high: symbol of 16 in its tint, title, and a count at the right when set. Put
// it at x 0 of the card, 8 below its top.
class CardHeader final : public QWidget {
    Q_OBJECT

  public:
    CardHeader(Symbol, const Theme::Tone& tint, const QString& title, QWidget* parent = nullptr);
    void setTitle(const QString&);
    void setSymbol(Symbol, const Theme::Tone& tint);
    void setCount(int);        // shows the capsule
    void setControl(QWidget*); // left of it; takes it
    QSize sizeHint() const override { return {200, 36}; }

  protected:
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;

  private:
    void arrange();

    Symbol symbol_;
    Theme::Tone tint_;
    TextLabel* title_;
    QLabel* count_ = nullptr;
    QWidget* control_ = nullptr;
};

// Nothing to show: a symbol on a disc and a sentence.
class EmptyCard final : public Card {
    Q_OBJECT

  public:
    EmptyCard(Symbol, const QString& text, QWidget* parent = nullptr);
};

}
