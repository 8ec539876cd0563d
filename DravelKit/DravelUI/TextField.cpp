#include "DravelKit/DravelUI/TextField.h"

#include "DravelKit/DravelUI/TextPaint.h"

#include <QKeyEvent>
#include <QPainter>
#include <QRegularExpression>
#include <QValidator>

#include <utility>

namespace dravel {

using namespace Qt::StringLiterals;

namespace {

// Lets everything pass, but in one line.
class OneLine final : public QValidator {
  public:
    using QValidator::QValidator;

    State validate(QString& text, int& cursor) const override {
        static const QRegularExpression breaks(u"\\r\\n|[\\n-\\r\\x{85}\\x{2028}\\x{2029}]"_s);
        if (!text.contains(breaks)) return Acceptable;
        lines_ = text.split(breaks, Qt::SkipEmptyParts);
        cursor = static_cast<int>(text.left(cursor).replace(breaks, u" "_s).size());
        text.replace(breaks, u" "_s);
        return Acceptable;
    }
    QStringList takeLines() { return std::exchange(lines_, {}); }

  private:
    mutable QStringList lines_;
};

}

TextField::TextField(Kind kind, const QString& placeholder, QWidget* parent) : QLineEdit(parent), kind_(kind) {
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    setFrame(kind == Kind::boxed);
    // QLineEdit keeps 2 px of its own before the text, and rounds its middle down.
    if (kind == Kind::boxed)
        setTextMargins(8, 0, 8, 1);
    else
        setTextMargins(-2, 0, -2, 1);
    auto* oneLine = new OneLine(this);
    setValidator(oneLine);
    const auto fit = [this, oneLine](const QString& text) {
        setFont(Theme::font(text.isEmpty() ? Theme::Typography::body : Theme::Typography::bodyMedium));
        if (const auto lines = oneLine->takeLines(); !lines.isEmpty()) Q_EMIT linesPasted(lines);
    };
    fit({});
    connect(this, &QLineEdit::textChanged, this, fit);
}

QSize TextField::sizeHint() const { return {200, kind_ == Kind::boxed ? 32 : 40}; }

// Where the field has nothing to take back, the key is the program's own.
bool TextField::event(QEvent* event) {
    const bool undo =
        event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Undo);
    if (!undo || isUndoAvailable()) return QLineEdit::event(event);
    event->ignore();
    return true;
}

void TextField::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    Q_EMIT focusChanged(true);
}

void TextField::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    Q_EMIT focusChanged(false);
}

namespace {

constexpr int offerPadding = 12, offerKey = 14, offerGap = 8;

}

Offer::Offer(TextField& field, QWidget* parent) : Control(parent), field_(field) {
    setFocusPolicy(Qt::NoFocus); // the field's Tab key is its own
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    setToolTip(u"Touche Tab"_s);
    setAccessibleDescription(u"touche Tab"_s);
    field.installEventFilter(this);
    hide();
}

void Offer::make(const QString& what) {
    if (what == text()) return;
    setText(what);
    setAccessibleName(what);
    const bool again = isVisible();
    setVisible(!what.isEmpty());
    if (again && isVisible()) announce(*this);
    updateGeometry();
    update();
}

QSize Offer::sizeHint() const {
    return {textWidth(Theme::Typography::callout, text()) + 2 * offerPadding + offerGap + offerKey, 28};
}

bool Offer::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !isVisible()) return Control::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() != Qt::Key_Tab || key->modifiers() != Qt::NoModifier) return Control::eventFilter(watched, event);
    click();
    return true;
}

void Offer::paint(QPainter& painter) {
    const auto& fill = isDown() ? Theme::accentSoftPressed : isHovered() ? Theme::softHover : Theme::accentSoft;
    const QColor ink = Theme::accentOnSoft.on(*this);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill.on(*this));
    painter.drawRoundedRect(rect(), faceRadius(), faceRadius());
    paintLine(painter, rect().adjusted(offerPadding, 0, -offerPadding - offerGap - offerKey, 0),
              Theme::Typography::callout, ink, text());
    painter.translate(width() - offerPadding - offerKey, height() / 2.0); // the sign on the Tab key
    painter.setPen(QPen(ink, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawLine(QPointF(1, 0), QPointF(10, 0));
    painter.drawPolyline(QPolygonF{{7, -3.5}, {10.5, 0}, {7, 3.5}});
    painter.drawLine(QPointF(13, -4), QPointF(13, 4));
}

}
