#pragma once

#include "DravelKit/DravelUI/Card.h"
#include "Tacla/MainWindow/PageContents.h"

#include <vector>

class QVBoxLayout;

namespace tacla {

// What is wrong with the file or the calendar; hidden when nothing is.
class ProblemsCard final : public dravel::Card {
    Q_OBJECT

  public:
    explicit ProblemsCard(QWidget* parent = nullptr);
    void setProblems(std::vector<Problem>);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    std::vector<Problem> problems_;
    std::vector<dravel::TextLabel*> lines_;
    QVBoxLayout* column_;
};

}
