#pragma once

#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/Foundation/Instant.h"
#include "Tacla/MainWindow/PageContents.h"

namespace dravel {
class Button;
}

namespace tacla {

class AppModel;

// A card with a group's title and count, and a button that postpones all of them where that may be wanted. The column
// that it stands in places it and its rows.
class TaskListCard final : public dravel::Card {
    Q_OBJECT

  public:
    TaskListCard(AppModel&, const dravel::Now&, QWidget* parent = nullptr);
    void setGroup(const TaskGroup&);
    QWidget& postponeButton();
    void offerDays(); // to postpone all to

  protected:
    void resizeEvent(QResizeEvent*) override;

  private:
    AppModel& model_;
    const dravel::Now& now_;
    TaskSelection tasks_; // where they can be postponed
    dravel::CardHeader* header_;
    dravel::Button* postpone_;
    dravel::TextLabel* empty_;
};

}
