#pragma once

#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/Foundation/Instant.h"

namespace dravel {
class EmptyCard;
}

namespace tacla {

class AppModel;
class ProblemsCard;
class TaskColumn;

class LatePage final : public dravel::DravelPage {
    Q_OBJECT

  public:
    LatePage(AppModel&, const dravel::Now&, QWidget* parent = nullptr);

  private:
    void refresh();

    AppModel& model_;
    ProblemsCard* problems_;
    dravel::EmptyCard* empty_;
    TaskColumn* tasks_;
};

class UpcomingPage final : public dravel::DravelPage {
    Q_OBJECT

  public:
    UpcomingPage(AppModel&, const dravel::Now&, QWidget* parent = nullptr);

  private:
    void refresh();

    AppModel& model_;
    dravel::EmptyCard* empty_;
    TaskColumn* tasks_;
};

class DonePage final : public dravel::DravelPage {
    Q_OBJECT

  public:
    DonePage(AppModel&, const dravel::Now&, QWidget* parent = nullptr);

  private:
    void refresh();

    AppModel& model_;
    dravel::EmptyCard* empty_;
    TaskColumn* tasks_;
};

}
