#pragma once

#include "DravelKit/DravelUI/Card.h"
#include "Tacla/MainWindow/PageContents.h"

namespace dravel {
class CardHeader;
class TextLabel;
}

namespace tacla {

// A card with a group's title and count. The column that it stands in places it and its rows.
class TaskListCard final : public dravel::Card {
    Q_OBJECT

  public:
    explicit TaskListCard(QWidget* parent = nullptr);
    void setGroup(const TaskGroup&);

  protected:
    void resizeEvent(QResizeEvent*) override;

  private:
    dravel::CardHeader* header_;
    dravel::TextLabel* empty_;
};

}
