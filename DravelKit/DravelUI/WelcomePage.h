#pragma once

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Card.h"

#include <QIcon>
#include <QScrollArea>

class QVBoxLayout;

namespace dravel {

class Disc;

// One numbered step with an optional button. The number is given by the page.
class WelcomeStep final : public Card {
    Q_OBJECT

  public:
    WelcomeStep(const QString& title, const QString& text, QWidget* parent = nullptr);
    void setDone(bool); // the number becomes a check, the button goes
    void setButton(const QString& text, Button::Kind = Button::Kind::neutral); // "" hides it
    Button& button() const { return *button_; }
    Button& addSecondButton(const QString& text);                            // under the button; hidden at first
    void setNote(const QString&, const Theme::Tone& = Theme::textSecondary); // under the text; "" hides it
    void setNumber(int);

  private:
    void refresh();

    int number_ = 1;
    bool done_ = false;
    Disc* disc_;
    Button* button_;
    TextLabel* note_;
    QVBoxLayout* buttons_;
};

// Icon, title, introduction, steps and the closing button, centred; scrolls when the window is too low.
class WelcomePage final : public QScrollArea {
    Q_OBJECT

  public:
    WelcomePage(const QIcon&, const QString& title, const QString& intro, const QString& closing,
                QWidget* parent = nullptr);
    WelcomeStep* addStep(WelcomeStep*); // takes it
    Button& closingButton() const { return *closing_; }

  protected:
    void resizeEvent(QResizeEvent*) override;
    void showEvent(QShowEvent*) override; // the closing button gets the first focus

  private:
    QWidget* column_;
    QVBoxLayout* steps_;
    Button* closing_;
    int count_ = 0;
};

}
