#pragma once

#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/Foundation/Instant.h"
#include "Tacla/MainWindow/PageContents.h"

// The pages that show tasks.
namespace dravel {
class EmptyCard;
}

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

// A page that is a list of tasks under a title: late, upcoming or done.
class ListPage final : public dravel::DravelPage {
    Q_OBJECT

  public:
    ListPage(Section, AppModel&, const dravel::Now&, QWidget* parent = nullptr);

  private:
    void refresh(ListContents);

    AppModel& model_;
    ProblemsCard* problems_;
    dravel::EmptyCard* empty_;
    TaskColumn* tasks_;
};

}
