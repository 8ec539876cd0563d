#pragma once

#include "DravelKit/DravelUI/Control.h"

#include <QLineEdit>
#include <QStringList>

namespace dravel {

// A line of text to type: typed text in body medium, placeholder in body. Line breaks that come in become spaces.
class TextField final : public QLineEdit {
    Q_OBJECT

  public:
    enum class Kind { frameless, boxed }; // boxed: 32 high on surface, accent border while focused

    TextField(Kind, const QString& placeholder, QWidget* parent = nullptr);
    QSize sizeHint() const override;

  Q_SIGNALS:
    void focusChanged(bool focused);
    void linesPasted(const QStringList&); // told before textChanged(): what the field now holds in one line

  protected:
    bool event(QEvent*) override;
    void focusInEvent(QFocusEvent*) override;
    void focusOutEvent(QFocusEvent*) override;

  private:
    Kind kind_;
};

// What may be done with the text of a field: a chip under it that tells so. Tab in the field or a click takes it.
class Offer final : public Control {
    Q_OBJECT

  public:
    explicit Offer(TextField&, QWidget* parent = nullptr);
    void make(const QString& what); // empty: there is none
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, 28}; }

  protected:
    void paint(QPainter&) override;
    int faceRadius() const override { return 14; }
    bool eventFilter(QObject*, QEvent*) override;

  private:
    TextField& field_;
};

}
