#pragma once

#include <QWidget>

namespace dravel {

class Button;
class TextLabel;

// A short message over the foot of a page, with a button when there is something to do about it. It never takes the
// focus by itself; screen readers are told when it comes or says something else.
class Toast final : public QWidget {
    Q_OBJECT

  public:
    explicit Toast(QWidget* parent = nullptr);

    void tell(const QString& text, const QString& action = {}); // no action: no button
    void dismiss();
    int placeAtFootOf(const QRect& page); // how much of the page's foot it covers

  Q_SIGNALS:
    void acted();
    void changed(); // comes, goes or wants another width

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    TextLabel* text_;
    Button* action_;
};

}
