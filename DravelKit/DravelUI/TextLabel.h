#pragma once

#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/DravelUI/TextPaint.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QLabel>

#include <optional>

namespace dravel {

// Plain text in one style and tone. A single line that elides, at the right by default, or wrapped text (setWraps). Its
// text is its name on the accessibility bus; change it with setText(). A top margin gives a line room for the accents
// of capitals, which may reach above the line box.
class TextLabel final : public QLabel {
    Q_OBJECT

  public:
    TextLabel(const Theme::TextStyle&, const Theme::Tone&, const QString& text = {}, QWidget* parent = nullptr);

    void setTone(const Theme::Tone&);
    void setWraps(bool);
    void setElide(Qt::TextElideMode mode) { elide_ = mode; }
    void setSelectable(bool); // with the mouse; Ctrl+C copies
    QString selectedPart() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return wraps_; }
    int heightForWidth(int) const override;

  protected:
    void paintEvent(QPaintEvent*) override;
    void mousePressEvent(QMouseEvent*) override;
    void mouseMoveEvent(QMouseEvent*) override;
    void mouseDoubleClickEvent(QMouseEvent*) override;
    void keyPressEvent(QKeyEvent*) override;
    void focusOutEvent(QFocusEvent*) override;
    void contextMenuEvent(QContextMenuEvent*) override;

  private:
    void selectAll();
    const Paragraph& paragraph(int width) const;

    Theme::TextStyle style_;
    Theme::Tone tone_;
    Qt::TextElideMode elide_ = Qt::ElideRight;
    bool wraps_ = false, selectable_ = false;
    int anchor_ = 0, cursor_ = 0; // of the selection
    mutable std::optional<Paragraph> paragraph_;
    mutable QString laidOut_;
};

// What a tag looks like: plain (no fill), or strong in a soft fill of its own.
struct TagLook {
    Theme::Tone text, icon;
    std::optional<Theme::Tone> fill;

    static TagLook plain();
    static TagLook danger();
    static TagLook warning();
    static TagLook success();
};

// A symbol and a short text, 18 high.
QSize tagSize(const TagLook&, const QString& text);
void paintTag(QPainter&, QPointF topLeft, Appearance, Symbol, const QString& text, const TagLook&);

}
