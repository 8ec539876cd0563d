#pragma once

#include "DravelKit/DravelUI/Card.h"
#include "Tacla/MainWindow/PageContents.h"

namespace dravel {
class ProgressRing;
class TextLabel;
}

namespace tacla {

// The head of the today page: how the day stands.
class HeroCard final : public dravel::Card {
    Q_OBJECT

  public:
    explicit HeroCard(QWidget* parent = nullptr);
    void setContents(const TodayContents&);

  protected:
    void resizeEvent(QResizeEvent*) override;

  private:
    dravel::TextLabel *overline_, *headline_, *detail_;
    dravel::ProgressRing* ring_;
};

}
