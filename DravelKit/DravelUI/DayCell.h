#pragma once

#include "DravelKit/DravelUI/Control.h"

#include <QDate>

namespace dravel {

// One day of a DatePopup.
class DayCell final : public Control {
    Q_OBJECT

  public:
    struct Day {
        QDate date;
        bool today, selected, otherMonth;
    };

    explicit DayCell(QWidget* parent);
    void setDay(const Day&);
    QDate date() const { return day_.date; }

  protected:
    void paint(QPainter&) override;
    void keyPressEvent(QKeyEvent*) override;

  private:
    Day day_{};
};

}
