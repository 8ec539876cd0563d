#include "Tacla/MainWindow/Pages/TaskPages.h"

#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/PageContents.h"
#include "Tacla/MainWindow/Pages/HeroCard.h"
#include "Tacla/MainWindow/Pages/ProblemsCard.h"
#include "Tacla/MainWindow/Pages/TaskColumn.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/RefreshWhileVisible.h"
#include "Tacla/MainWindow/Rows/TaskControls.h"

namespace tacla {

TodayPage::TodayPage(AppModel& model, const dravel::Now& now, QWidget* parent)
    : DravelPage(parent), model_(model), hero_(new HeroCard(&stage())), add_(new AddTaskCard(model, now, &stage())),
      problems_(new ProblemsCard(&stage())), tasks_(new TaskColumn(*this, model, now)) {
    setObjectName(toQt("page." + std::string(rawValue(Section::today))));
    setAccessibleName(toQt(title(Section::today)));
    for (QWidget* card : std::initializer_list<QWidget*>{hero_, add_, problems_, tasks_}) add(card);
    new RefreshWhileVisible(*this, model.changed, [this] { refresh(); });
    refresh();
}

void TodayPage::beginTask() {
    reveal(*add_);
    add_->focusTitle();
}

void TodayPage::refresh() {
    const auto& state = model_.state();
    auto contents = todayContents(state);
    hero_->setContents(contents);
    add_->setToday(state.today);
    problems_->setProblems(problems(state));
    tasks_->setGroups(std::move(contents.groups), state.today);
}

}
