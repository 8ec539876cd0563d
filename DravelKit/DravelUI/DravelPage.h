#pragma once

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Card.h"

#include <QIcon>
#include <QScrollArea>
#include <QVBoxLayout>

namespace dravel {

class Disc;

// A page: one vertical scroll area with a centred column of cards, at most 820 wide, under an optional title and
// subtitle. Its accessible name is the title (set one when the page has no head).
class DravelPage : public QScrollArea {
    Q_OBJECT

  public:
    static constexpr int maximumColumn = 820, margin = Theme::Space::lg;

    explicit DravelPage(QWidget* parent = nullptr);
    DravelPage(const QString& title, const QString& subtitle, QWidget* parent = nullptr);

    void setSubtitle(const QString&);
    void add(QWidget*);       // at the foot of the column; a hidden widget takes no room
    void remove(QWidget*);    // out of the column; the caller deletes it
    CardStage& stage() const; // parent of everything added
    QRect
    visiblePart(const QWidget&) const; // the part of a descendant that shows, in its own coordinates; may be empty
    void reveal(const QWidget&, int slack = Theme::Space::md); // scrolls a descendant into view
    void setCoveredFoot(int height); // something lies over the foot of the view: the column can be scrolled past it

  Q_SIGNALS:
    void viewChanged(); // scrolled or resized: what shows may be other rows

  protected:
    void resizeEvent(QResizeEvent*) override;
    void scrollContentsBy(int, int) override;

  private:
    void fitColumn();

    QVBoxLayout* column_;
    TextLabel* subtitle_ = nullptr;
    QWidget* head_ = nullptr;
    int coveredFoot_ = 0;
};

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
