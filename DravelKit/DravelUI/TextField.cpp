#include "DravelKit/DravelUI/TextField.h"

#include "DravelKit/DravelUI/Typography.h"

namespace dravel {

TextField::TextField(Kind kind, const QString& placeholder, QWidget* parent) : QLineEdit(parent), kind_(kind) {
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    setFrame(kind == Kind::Boxed);
    // QLineEdit keeps 2 px of its own before the text, and rounds its middle down.
    if (kind == Kind::Boxed)
        setTextMargins(8, 0, 8, 1);
    else
        setTextMargins(-2, 0, -2, 1);
    const auto fit = [this](const QString& text) {
        setFont(Theme::font(text.isEmpty() ? Theme::Typography::body : Theme::Typography::bodyMedium));
    };
    fit({});
    connect(this, &QLineEdit::textChanged, this, fit);
}

QSize TextField::sizeHint() const { return {200, kind_ == Kind::Boxed ? 32 : 40}; }

void TextField::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    Q_EMIT focusChanged(true);
}

void TextField::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    Q_EMIT focusChanged(false);
}

}
