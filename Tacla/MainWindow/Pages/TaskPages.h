#pragma once

#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/Foundation/Instant.h"

namespace tacla {

class AddTaskCard;
class AppModel;
class HeroCard;
class ProblemsCard;
class TaskColumn;

class TodayPage final : public dravel::DravelPage {
    Q_OBJECT

  public:
    TodayPage(AppModel&, const dravel::Now&, QWidget* parent = nullptr);
    void beginTask(); // the add card comes into view, ready to type

  private:
    void refresh();

    AppModel& model_;
    HeroCard* hero_;
    AddTaskCard* add_;
    ProblemsCard* problems_;
    TaskColumn* tasks_;
};

}
