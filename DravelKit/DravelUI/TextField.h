#pragma once

#include <QLineEdit>

namespace dravel {

// A line of text to type: typed text in body medium, placeholder in body.
class TextField final : public QLineEdit {
    Q_OBJECT

  public:
    enum class Kind { Frameless, Boxed }; // boxed: 32 high on surface, accent border while focused

    TextField(Kind, const QString& placeholder, QWidget* parent = nullptr);
    QSize sizeHint() const override;

  Q_SIGNALS:
    void focusChanged(bool focused);

  protected:
    void focusInEvent(QFocusEvent*) override;
    void focusOutEvent(QFocusEvent*) override;

  private:
    Kind kind_;
};

}
