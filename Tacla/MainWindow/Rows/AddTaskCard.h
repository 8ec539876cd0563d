#pragma once

#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/Foundation/Instant.h"
#include "Tacla/MainWindow/Rows/RowContents.h"

#include <array>

class QBoxLayout;

namespace dravel {
class Button;
class Chip;
class DateField;
class Switch;
class TextField;
class TimeField;
}

namespace tacla {

class AppModel;

// Where a new task is typed. Its day follows today until another one is picked.
class AddTaskCard final : public dravel::Card {
    Q_OBJECT

  public:
    AddTaskCard(AppModel&, const dravel::Now&, QWidget* parent = nullptr);
    void setToday(Day);
    void focusTitle(); // ready to type

  private:
    void nameFields();
    void arrange();
    QBoxLayout* fieldLine();
    QBoxLayout* choices();
    void followFields();
    void pick(Day);
    void add();
    void showDraft();
    Day currentDay() const { return Day::of(now_()); }

    AppModel& model_;
    const dravel::Now& now_;
    NewTaskDraft draft_;
    Day today_;
    dravel::TextField* title_;
    std::array<dravel::Chip*, 3> chips_;
    dravel::DateField* date_;
    dravel::Switch *hasTime_, *strong_;
    dravel::TimeField* time_;
    dravel::Button* add_;
};

}
