#pragma once

#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/Foundation/Instant.h"
#include "Tacla/MainWindow/PageContents.h"

namespace dravel {
class EmptyCard;
}

namespace tacla {

class AppModel;
class ProblemsCard;
class TaskColumn;
struct ListContents;

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
